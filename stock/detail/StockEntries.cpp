#include <stock/detail/StockEntries.h>

#include <sources/SourceNames.h>
#include <stock/StockCapsuleEntry.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <limits>

namespace orvcapsule::detail {

using namespace orvappsupport::search;

namespace {

std::uint32_t ToPixels(std::uint64_t number)
{
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(number, std::numeric_limits<std::uint32_t>::max()));
}

boost::shared_ptr<CapsuleEntry> MakeEntry(const Results& results, const Row& row)
{
    auto entry = boost::make_shared<StockCapsuleEntry>();
    entry->sourcePath = {kStockSourceID};
    entry->stockID = row.id;
    entry->isPremium = row.premium;
    entry->isLicensed = row.licensed;
    entry->name = orvcore::ToUTF16(row.title);
    entry->description = orvcore::ToUTF16(results.GetText(row, kResultColumn_Description));
    entry->creatorName = orvcore::ToUTF16(results.GetText(row, kResultColumn_CreatorName));
    for (const orvcore::UTF8String& keyword : results.GetList(row, kResultColumn_Keywords)) {
        entry->tags.push_back(orvcore::ToUTF16(keyword));
    }
    entry->frameWidth = ToPixels(results.GetNumber(row, kResultColumn_Width));
    entry->frameHeight = ToPixels(results.GetNumber(row, kResultColumn_Height));
    entry->thumbnailURL = results.GetText(row, kResultColumn_ThumbnailURL);
    entry->smallThumbnailURL = results.GetText(row, kResultColumn_ThumbnailURL_240);
    entry->thumbnailHTMLTag = results.GetText(row, kResultColumn_ThumbnailHTMLTag);
    entry->thumbnailWidth = ToPixels(results.GetNumber(row, kResultColumn_ThumbnailWidth));
    entry->thumbnailHeight = ToPixels(results.GetNumber(row, kResultColumn_ThumbnailHeight));
    entry->videoPreviewURL = results.GetText(row, kResultColumn_VideoPreviewURL);
    entry->fileSize = results.GetNumber(row, kResultColumn_SizeBytes);
    entry->metadataURL = results.GetText(row, kResultColumn_ZeltMetadataURL);
    entry->categories = results.GetList(row, kResultColumn_TemplateCategories);
    return entry;
}

} // namespace

const std::vector<orvcore::UTF8String>& ResultColumns()
{
    static const std::vector<orvcore::UTF8String> columns = {
        kResultColumn_Description,      kResultColumn_CreatorName,
        kResultColumn_Keywords,         kResultColumn_Width,
        kResultColumn_Height,           kResultColumn_ThumbnailURL,
        kResultColumn_ThumbnailURL_240, kResultColumn_ThumbnailHTMLTag,
        kResultColumn_ThumbnailWidth,   kResultColumn_ThumbnailHeight,
        kResultColumn_VideoPreviewURL,  kResultColumn_SizeBytes,
        kResultColumn_ZeltMetadataURL,  kResultColumn_TemplateCategories};
    return columns;
}

std::vector<boost::shared_ptr<CapsuleEntry>> MakeEntries(const Results& results)
{
    std::vector<boost::shared_ptr<CapsuleEntry>> entries;
    entries.reserve(results.rows.size());
    for (const Row& row : results.rows) {
        entries.push_back(MakeEntry(results, row));
    }
    return entries;
}

} // namespace orvcapsule::detail
