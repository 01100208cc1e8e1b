#include <stock/detail/StockEntries.h>

#include <orvcore/tasks/shared/NoDestructor.h>
#include <sources/SourceNames.h>
#include <stock/StockCapsuleEntry.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <iterator>
#include <limits>
#include <span>
#include <string_view>

// The list of columns is sent with the search, and a row's values come in the order in which they were asked for; so
// one table serves both, and the position of a column in it is its position in each row. Values are hostile: a value of
// another kind than wanted counts as none.

namespace orvcapsule::detail {

using namespace orvappsupport::search;

namespace {

std::u8string_view TextOf(const Value& value)
{
    const auto* const text = std::get_if<std::u8string_view>(&value);
    return text != nullptr ? *text : std::u8string_view();
}

std::uint64_t NumberOf(const Value& value)
{
    const auto* const number = std::get_if<std::uint64_t>(&value);
    return number != nullptr ? *number : 0;
}

std::uint32_t PixelsOf(const Value& value)
{
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(NumberOf(value), std::numeric_limits<std::uint32_t>::max()));
}

std::span<const std::u8string_view> ListOf(const Value& value)
{
    const auto* const list = std::get_if<std::span<const std::u8string_view>>(&value);
    return list != nullptr ? *list : std::span<const std::u8string_view>();
}

std::vector<orvcore::UTF16String> WideListOf(const Value& value)
{
    const auto list = ListOf(value);
    std::vector<orvcore::UTF16String> wide;
    wide.reserve(list.size());
    std::transform(list.begin(), list.end(), std::back_inserter(wide),
                   [](std::u8string_view text) { return orvcore::ToUTF16(text); });
    return wide;
}

// What is asked for, and what becomes of it.
struct Column {
    const char8_t* name;
    void (*fill)(StockCapsuleEntry&, const Value&);
};
constexpr Column kColumns[] = {
    {kResultColumn_Description, [](auto& entry, auto& value) { entry.description = orvcore::ToUTF16(TextOf(value)); }},
    {kResultColumn_CreatorName, [](auto& entry, auto& value) { entry.creatorName = orvcore::ToUTF16(TextOf(value)); }},
    {kResultColumn_Keywords, [](auto& entry, auto& value) { entry.tags = WideListOf(value); }},
    {kResultColumn_Width, [](auto& entry, auto& value) { entry.frameWidth = PixelsOf(value); }},
    {kResultColumn_Height, [](auto& entry, auto& value) { entry.frameHeight = PixelsOf(value); }},
    {kResultColumn_ThumbnailURL, [](auto& entry, auto& value) { entry.thumbnailURL = TextOf(value); }},
    {kResultColumn_ThumbnailURL_240, [](auto& entry, auto& value) { entry.smallThumbnailURL = TextOf(value); }},
    {kResultColumn_ThumbnailHTMLTag, [](auto& entry, auto& value) { entry.thumbnailHTMLTag = TextOf(value); }},
    {kResultColumn_ThumbnailWidth, [](auto& entry, auto& value) { entry.thumbnailWidth = PixelsOf(value); }},
    {kResultColumn_ThumbnailHeight, [](auto& entry, auto& value) { entry.thumbnailHeight = PixelsOf(value); }},
    {kResultColumn_VideoPreviewURL, [](auto& entry, auto& value) { entry.videoPreviewURL = TextOf(value); }},
    {kResultColumn_SizeBytes, [](auto& entry, auto& value) { entry.fileSize = NumberOf(value); }},
    {kResultColumn_ZeltMetadataURL, [](auto& entry, auto& value) { entry.metadataURL = TextOf(value); }},
    {kResultColumn_TemplateCategories,
     [](auto& entry, auto& value) {
         const auto list = ListOf(value);
         entry.categories.assign(list.begin(), list.end());
     }},
};

boost::shared_ptr<CapsuleEntry> MakeEntry(const Row& row)
{
    auto entry = boost::make_shared<StockCapsuleEntry>();
    entry->sourcePath.emplace_back(kStockSourceID);
    entry->stockID = row.id;
    entry->isPremium = row.premium;
    entry->isLicensed = row.licensed;
    entry->name = orvcore::ToUTF16(row.title);
    for (std::size_t i = 0; i < std::size(kColumns); ++i) {
        kColumns[i].fill(*entry, row.values[i]);
    }
    return entry;
}

} // namespace

const std::vector<orvcore::UTF8String>& ResultColumns()
{
    static orvcore::NoDestructor<std::vector<orvcore::UTF8String>> columns([] {
        std::vector<orvcore::UTF8String> names;
        for (const Column& column : kColumns) {
            names.emplace_back(column.name);
        }
        return names;
    }());
    return *columns;
}

std::vector<boost::shared_ptr<CapsuleEntry>> MakeEntries(const std::vector<Row>& rows)
{
    std::vector<boost::shared_ptr<CapsuleEntry>> entries;
    entries.reserve(rows.size());
    std::transform(rows.begin(), rows.end(), std::back_inserter(entries), &MakeEntry);
    return entries;
}

} // namespace orvcapsule::detail
