#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/InfoOutput.h>
#include <tools/zelt/output/Output.h>

namespace zelt {

ExitCode RunInfo(const InfoOptions& options)
{
    ExitCode exit = ExitCode::kDone;
    bool first = true;
    for (const std::string& file : options.files) {
        const ExitCode one = OnFile(file, [&] {
            const Template read = ReadTemplate(file);
            if (options.json) {
                PrintLine(InfoAsJSON(read));
            } else if (read.IsGood()) {
                Print((first ? "" : "\n") + InfoAsText(read));
                first = false;
            }
            if (!read.IsGood()) {
                throw FileError(file, read.definition.refusals.front().text);
            }
        });
        exit = one == ExitCode::kDone ? exit : one;
    }
    return exit;
}

} // namespace zelt
