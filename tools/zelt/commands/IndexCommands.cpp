#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/IndexFile.h>
#include <tools/zelt/support/Template.h>

#include <orvcore/files/Paths.h>
#include <orvcore/json/JSONTextWriter.h>
#include <orvcore/text/Guid.h>
#include <sources/SearchIndex.h>

namespace zelt {

namespace {

using Texts = std::vector<orvcore::UTF8String>;

struct Row {
    std::string file;
    orvcore::UTF8String path; ///< full
    Texts texts;
};

// What a listing would put into the index for a package.
Row ReadRow(const std::string& file)
{
    const Template read = NeedCapsule(file);
    const std::filesystem::path path = ToFullPath(file);
    Row row{file, orvcore::PathToUTF8(path), {}};
    const orvcore::UTF8String name = orvcore::ToUTF8(read.definition.capsule->GetDisplayName());
    row.texts.push_back(name.empty() ? orvcore::PathToUTF8(path.stem()) : name);
    for (const std::string& tag : read.definition.capsule->GetTags()) {
        row.texts.push_back(orvcore::ToUTF8(tag));
    }
    return row;
}

std::string AsJSON(const Row& row)
{
    orvcore::serialization::JSONTextWriter writer;
    writer.BeginObject();
    WritePath(writer, "file", row.file);
    WritePath(writer, "path", orvcore::AsNarrow(row.path));
    writer.Key("texts");
    writer.BeginArray();
    for (const orvcore::UTF8String& text : row.texts) {
        writer.String(orvcore::AsNarrow(text));
    }
    writer.EndArray();
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

// A path that was found, alone on a line.
std::string AsLine(const orvcore::UTF8String& path, bool json)
{
    if (!json) {
        return Printable(orvcore::AsNarrow(path));
    }
    orvcore::serialization::JSONTextWriter writer;
    writer.BeginObject();
    WritePath(writer, "path", orvcore::AsNarrow(path));
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

std::set<orvcore::UTF16String> PathsFor(const std::vector<std::string>& terms)
{
    std::vector<orvcore::UTF16String> wide;
    for (const std::string& term : terms) {
        wide.push_back(orvcore::ToUTF16(term));
    }
    std::set<orvcore::UTF16String> paths;
    orvcapsule::QueryRapidFindDB(wide, paths);
    return paths;
}

// A package that is indexed again may have lost tags, so its old rows go first.
void AddToIndex(const Row& row)
{
    orvcapsule::ClearRapidFindDB({row.path});
    for (const orvcore::UTF8String& text : row.texts) {
        orvcapsule::InsertRow(row.path, text);
    }
}

// Adds what can be read, reports the rest, and returns what was added.
std::vector<Row> AddPackages(const IndexBuildOptions& options, const orvcore::UTF8String& mark, ExitCode& exit)
{
    const OpenIndex index(options.database, false);
    std::vector<Row> rows;
    exit = ForEachPackage(options.packages, "indexing", &ReadRow, [&rows](const std::string&, Row& row) {
        AddToIndex(row);
        rows.push_back(std::move(row));
    });
    orvcapsule::InsertRow(mark, mark);
    return rows;
}

// The functions that fill an index do not tell whether they could. Rows are written in the order in which they come, so
// a mark that came last and is found in the file says that all are there.
void CheckWritten(const std::string& database, const orvcore::UTF8String& mark)
{
    const OpenIndex index(database, true);
    const auto found = PathsFor({orvcore::ToNarrow(mark)});
    orvcapsule::ClearRapidFindDB({mark});
    if (found.empty()) {
        throw FileError(database, "it could not be written; another program may have locked it");
    }
}

} // namespace

ExitCode RunIndexBuild(const IndexBuildOptions& options)
{
    ExitCode exit = ExitCode::kDone;
    const ExitCode ofIndex = OnFile(options.database, [&] {
        NeedSome(options.packages);
        const orvcore::UTF8String mark = orvcore::ToUTF8(orvcore::Guid::Create().ToString());
        const std::vector<Row> rows = AddPackages(options, mark, exit);
        CheckWritten(options.database, mark);
        for (const Row& row : rows) {
            if (options.json) {
                PrintLine(AsJSON(row));
            }
        }
        if (!options.json) {
            PrintLine(Printable(options.database) + ": " + Count(rows.size(), "package"));
        }
    });
    return ofIndex == ExitCode::kDone ? exit : ofIndex;
}

ExitCode RunIndexSearch(const IndexSearchOptions& options)
{
    return OnFile(options.database, [&] {
        const OpenIndex index(options.database, true);
        for (const orvcore::UTF16String& path : PathsFor(options.terms)) {
            PrintLine(AsLine(orvcore::PathTextToUTF8(path), options.json));
        }
    });
}

ExitCode RunIndexTags(const IndexTagsOptions& options)
{
    return OnFile(options.database, [&] {
        const OpenIndex index(options.database, true);
        std::set<orvcore::UTF16String> tags;
        orvcapsule::GetTags(orvcore::ToUTF16(options.prefix), tags);
        for (const orvcore::UTF16String& tag : tags) {
            PrintLine(OneMember("tag", orvcore::ToNarrow(tag), options.json));
        }
    });
}

} // namespace zelt
