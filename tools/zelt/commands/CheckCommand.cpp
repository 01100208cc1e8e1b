#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/FindingOutput.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>

#include <validation/Validation.h>

namespace zelt {

ExitCode RunCheck(const CheckOptions& options)
{
    Progress progress("checking");
    ExitCode exit = ExitCode::kDone;
    for (std::size_t i = 0; i < options.files.size(); ++i) {
        const std::string& file = options.files[i];
        const ExitCode one = OnFile(file, [&] {
            const orvcapsule::Findings findings = orvcapsule::ValidateTemplate(ToPath(file));
            progress.Clear();
            PrintLine(options.json ? FindingsJSON(file, findings, options.strict)
                                   : FindingsText(file, findings, options.strict));
            exit = IsGood(findings, options.strict) ? exit : ExitCode::kBadFile;
        });
        exit = one == ExitCode::kDone ? exit : one;
        progress.Set(static_cast<double>(i + 1) / static_cast<double>(options.files.size()));
    }
    return exit;
}

} // namespace zelt
