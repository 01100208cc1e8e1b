#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/InfoOutput.h>
#include <tools/zelt/output/Output.h>

namespace zelt {

namespace {

struct Info {
    std::string text;
    std::string refusal; // empty: the template is good
};

} // namespace

ExitCode RunInfo(const InfoOptions& options)
{
    bool first = true;
    const auto read = [&options](const std::string& file) {
        const Template from = ReadTemplate(file);
        return Info{options.json    ? InfoAsJSON(from)
                    : from.IsGood() ? InfoAsText(from)
                                    : "",
                    from.IsGood() ? "" : from.definition.refusals.front().text};
    };
    return ForEachPackage(options.packages, "reading", read, [&](const std::string& file, const Info& info) {
        if (options.json) {
            PrintLine(info.text);
        } else if (info.refusal.empty()) {
            Print((first ? "" : "\n") + info.text);
            first = false;
        }
        if (!info.refusal.empty()) {
            throw FileError(file, info.refusal);
        }
    });
}

} // namespace zelt
