#include <tools/stock/detail/Page.h>

#include <tools/http/Target.h>

#include <orvcore/json/JSONTextWriter.h>

#include <algorithm>
#include <array>

namespace orvtools::stock::detail {

// A column that was not asked for is left out, and so is one whose value is not known: the contract lets a client take
// an absent value for none. The order of the table is the order of the members.

namespace {

using Writer = orvcore::serialization::JSONTextWriter;

constexpr std::uint32_t kSmallWidth = 240;

// What the columns of one row are written from.
struct Row {
    Writer& writer;
    const Asset& asset;
    const Template& content;
    const PageContext& context;
    Preview poster;

    void Text(std::string_view key, std::string_view text) const
    {
        writer.Key(key);
        writer.String(text);
    }
    void Number(std::string_view key, std::uint64_t number) const
    {
        if (number > 0) { // 0 is what is not known
            writer.Key(key);
            writer.UInt(number);
        }
    }
    void URL(std::string_view key, std::string_view file) const
    {
        Text(key, FileURL(context.base, asset, file));
    }
};

void WriteKeywords(const Row& row, std::string_view key)
{
    row.writer.Key(key);
    row.writer.BeginArray();
    for (const std::string& keyword : row.content.keywords) {
        row.writer.String(keyword);
    }
    row.writer.EndArray();
}

void WriteCategories(const Row& row, std::string_view key)
{
    row.writer.Key(key);
    row.writer.BeginArray();
    if (row.content.category > 0) {
        row.writer.UInt(row.content.category);
    }
    row.writer.EndArray();
}

void WriteThumbnailURL(const Row& row, std::string_view key)
{
    if (!row.poster.file.empty()) {
        row.URL(key, "thumbnail");
    }
}

void WriteSmallThumbnailURL(const Row& row, std::string_view key)
{
    if (row.poster.width > 0 && row.poster.width <= kSmallWidth) {
        row.URL(key, "thumbnail");
    }
}

void WriteThumbnailTag(const Row& row, std::string_view key)
{
    if (!row.poster.file.empty()) {
        row.Text(key, "<img src=\"" + FileURL(row.context.base, row.asset, "thumbnail") + "\" alt=\"\">");
    }
}

void WriteVideoURL(const Row& row, std::string_view key)
{
    if (!row.context.previews.Video(row.content).file.empty()) {
        row.URL(key, "video");
    }
}

struct Column {
    std::string_view name;
    void (*write)(const Row& row, std::string_view key);
};

constexpr auto kColumns = std::to_array<Column>({
    {"description", [](const Row& row, std::string_view key) { row.Text(key, row.content.description); }},
    {"creator_name", [](const Row& row, std::string_view key) { row.Text(key, row.content.creator); }},
    {"keywords", &WriteKeywords},
    {"width", [](const Row& row, std::string_view key) { row.Number(key, row.content.width); }},
    {"height", [](const Row& row, std::string_view key) { row.Number(key, row.content.height); }},
    {"thumbnail_url", &WriteThumbnailURL},
    {"thumbnail_240_url", &WriteSmallThumbnailURL},
    {"thumbnail_html_tag", &WriteThumbnailTag},
    {"thumbnail_width", [](const Row& row, std::string_view key) { row.Number(key, row.poster.width); }},
    {"thumbnail_height", [](const Row& row, std::string_view key) { row.Number(key, row.poster.height); }},
    {"video_preview_url", &WriteVideoURL},
    {"size_bytes", [](const Row& row, std::string_view key) { row.Number(key, row.content.size); }},
    {"zelt_metadata_url", [](const Row& row, std::string_view key) { row.URL(key, "metadata"); }},
    {"template_categories", &WriteCategories},
});

void WriteRow(Writer& writer, const Asset& asset, const Query& query, const PageContext& context)
{
    const Template& content = *asset.content;
    const Row row{writer, asset, content, context, context.previews.Poster(content)};
    writer.BeginObject();
    row.Text("id", asset.id);
    row.Text("title", content.title);
    writer.Key("premium");
    writer.Bool(content.premium);
    writer.Key("licensed");
    writer.Bool(content.premium && context.licensed);
    for (const Column& column : kColumns) {
        if (std::find(query.columns.begin(), query.columns.end(), column.name) != query.columns.end()) {
            column.write(row, column.name);
        }
    }
    writer.EndObject();
}

} // namespace

std::string MakePage(const std::vector<const Asset*>& found, const Query& query, const PageContext& context)
{
    const std::size_t first = std::min<std::size_t>(query.first, found.size());
    const std::size_t count = std::min({std::size_t{query.count}, context.maxRows, found.size() - first});
    Writer writer;
    writer.BeginObject();
    writer.Key("total");
    writer.UInt(found.size());
    writer.Key("rows");
    writer.BeginArray();
    for (std::size_t i = first; i < first + count; ++i) {
        WriteRow(writer, *found[i], query, context);
    }
    writer.EndArray();
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

std::string FileURL(const std::string& base, const Asset& asset, std::string_view file)
{
    return base + "/v1/assets/" + http::EncodePercent(asset.id) + '/' + std::string(file);
}

} // namespace orvtools::stock::detail
