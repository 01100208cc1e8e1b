#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/commands/table/CommandTable.h>
#include <tools/zelt/commands/table/SharedOptions.h>

namespace zelt {

std::vector<Command> ReadingCommands()
{
    return {
        Define("info", "Show what packages hold", &RunInfo,
               [](Command& command, InfoOptions& options) {
                   AddPackages(command, options.packages);
                   command.Option("--json", options.json, kJSONForEachPackage);
                   command.Example("info lower-third.zelt", "what a package holds");
                   command.Example("--language de_DE info --json *.zelt", "the same of many, in German, for programs");
               }),
        Define("definition", "Print a package's definition document", &RunDefinition,
               [](Command& command, DefinitionOptions& options) {
                   command.Argument("FILE", options.file, "Package");
                   command.Option("--canonical", options.canonical,
                                  "As this library writes it, rather than as it is stored");
                   command.Example("definition lower-third.zelt > lower-third.json", "the document, byte for byte");
               }),
        Define("check", "Say of each package whether it is good, and what is wrong", &RunCheck,
               [](Command& command, CheckOptions& options) {
                   AddPackages(command, options.packages);
                   command.Option("--json", options.json, kJSONForEachPackage);
                   command.Option("--strict", options.strict, "Warnings make a package bad, too");
                   command.Example("check ~/Templates", "judge all packages in a folder and below it");
                   command.Example("check --files-from list.txt -j 4", "those that a file names, four at one time");
               }),
        Define("fonts", "List the fonts that packages need, and which of them this machine lacks", &RunFonts,
               [](Command& command, FontsOptions& options) {
                   AddPackages(command, options.packages);
                   command.Option("--json", options.json, kJSONForEachPackage);
                   command.Option("--report DOCUMENT", options.document,
                                  "Send a message for each font: this document uses it");
                   command.Example("fonts ~/Templates", "the fonts of all packages in a folder and below it");
               }),
    };
}

} // namespace zelt
