#include "Commands.h"
#include "Output.h"
#include "Progress.h"
#include "Template.h"

#include <orvcore/json/JSONTextWriter.h>

namespace zelt {

namespace {

std::string AsJSON(const std::string& file, const Problems& problems)
{
    orvcore::serialization::JSONTextWriter writer;
    writer.BeginObject();
    writer.Key("file");
    writer.String(std::string_view(file));
    writer.Key("ok");
    writer.Bool(problems.empty());
    writer.Key("problems");
    writer.BeginArray();
    for (const Problem& problem : problems) {
        writer.BeginObject();
        writer.Key("code");
        writer.String(std::string_view(problem.code));
        writer.Key("text");
        writer.String(std::string_view(problem.text));
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

std::string AsLine(const std::string& file, const Problems& problems)
{
    std::string line = file + (problems.empty() ? ": OK" : ": BAD");
    for (const Problem& problem : problems) {
        line += (&problem == &problems.front() ? ": " : "; ") + problem.text;
    }
    return Printable(line);
}

} // namespace

ExitCode RunCheck(const CheckOptions& options)
{
    Progress progress("checking");
    ExitCode exit = ExitCode::kDone;
    for (std::size_t i = 0; i < options.files.size(); ++i) {
        const std::string& file = options.files[i];
        const ExitCode one = OnFile(file, [&] {
            const Problems problems = CheckTemplate(file);
            progress.Clear();
            PrintLine(options.json ? AsJSON(file, problems) : AsLine(file, problems));
            exit = problems.empty() ? exit : ExitCode::kBadFile;
        });
        exit = one == ExitCode::kDone ? exit : one;
        progress.Set(static_cast<double>(i + 1) / static_cast<double>(options.files.size()));
    }
    return exit;
}

} // namespace zelt
