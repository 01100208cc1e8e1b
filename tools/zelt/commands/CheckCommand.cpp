#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/FindingOutput.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/OpenPackage.h>

#include <validation/Validation.h>

namespace zelt {

ExitCode RunCheck(const CheckOptions& options)
{
    bool areGood = true;
    // Runs on several threads at a time; the findings are printed on this one, in the order of the files.
    const auto judge = [](const std::string& file) {
        return orvcapsule::ValidateTemplate(ToPath(file), GetPassword());
    };
    const auto print = [&](const std::string& file, const orvcapsule::Findings& findings) {
        PrintLine(options.json ? FindingsJSON(file, findings, options.strict)
                               : FindingsText(file, findings, options.strict));
        areGood = areGood && IsGood(findings, options.strict);
    };
    const ExitCode exit = ForEachPackage(options.packages, "checking", judge, print);
    return exit == ExitCode::kDone && !areGood ? ExitCode::kBadFile : exit;
}

} // namespace zelt
