#include <tools/zelt/commands/table/SharedOptions.h>

namespace zelt {

void AddJSON(Command& command, WriteForm& form, const std::string& fact)
{
    command.Option("--json", form.json, "Tell of each written file in a JSON object: its path and " + fact);
}

void AddNoClobber(Command& command, WriteForm& form)
{
    command.Option("--no-clobber", form.noClobber, "Fail where a file is there already");
}

void AddPackages(Command& command, PackageList& packages)
{
    command.Argument("[FILE...]", packages.names, "Packages; a folder stands for all packages in and below it");
    command.Option("--files-from LIST", packages.listFile,
                   "Take further names from a file, one on each line; -: standard input");
    command.Option("-0, --null", packages.isNullSeparated, "Names in that file end with a NUL rather than a line feed");
    command.Option("-j, --jobs COUNT", packages.jobs,
                   "Packages at one time (default: as many as there are processors)");
}

} // namespace zelt
