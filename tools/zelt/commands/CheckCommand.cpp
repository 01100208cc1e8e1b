#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/Template.h>

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
    for (const Problem& problem : problems.Told()) {
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
    const char* separator = ": ";
    for (const Problem& problem : problems.Told()) {
        line += separator + problem.text;
        separator = "; ";
    }
    return Printable(line);
}

} // namespace

ExitCode RunCheck(const CheckOptions& options)
{
    bool areGood = true;
    const auto judge = [](const std::string& file) { return CheckTemplate(file); };
    const auto print = [&](const std::string& file, const Problems& problems) {
        PrintLine(options.json ? AsJSON(file, problems) : AsLine(file, problems));
        areGood = areGood && problems.empty();
    };
    const ExitCode exit = ForEachPackage(options.packages, "checking", judge, print);
    return exit == ExitCode::kDone && !areGood ? ExitCode::kBadFile : exit;
}

} // namespace zelt
