#include <tools/zelt/panel/EntryRow.h>

#include <orvcore/json/JSONTextWriter.h>
#include <stock/StockCapsuleEntry.h>
#include <validation/Finding.h>

#include <algorithm>

// A row is a list without keys, because a hundred thousand of them travel to the page. `catalogue.js` takes them apart
// by position, and knows the flags by their bits: both change together with this file.

namespace zelt {

namespace {

using orvcapsule::CapsuleEntry;

// A hostile template has any number. The search index has them all.
constexpr std::size_t kMostTags = 100;

// As in catalogue.js.
constexpr std::uint64_t kUnreadable = 1;
constexpr std::uint64_t kNeedsNewer = 2;
constexpr std::uint64_t kPoster = 4;
constexpr std::uint64_t kVideo = 8;
constexpr std::uint64_t kStock = 16;
constexpr std::uint64_t kPremium = 32;

const orvcapsule::StockCapsuleEntry* AsStock(const CapsuleEntry& entry)
{
    return dynamic_cast<const orvcapsule::StockCapsuleEntry*>(&entry);
}

std::uint64_t FlagsOf(const CapsuleEntry& entry)
{
    if (const auto* stock = AsStock(entry)) { // its previews are fetched when they are asked for
        return kStock | (stock->thumbnailURL.empty() ? 0U : kPoster) | (stock->videoPreviewURL.empty() ? 0U : kVideo) |
               (stock->isPremium ? kPremium : 0U);
    }
    return (IsUnreadable(entry) ? kUnreadable : 0U) | (entry.needsTsUpgrade ? kNeedsNewer : 0U) |
           (entry.thumbnailPath.empty() ? 0U : kPoster) | (entry.videoPreviewPath.empty() ? 0U : kVideo);
}

// Seconds since 1970; 0 when unknown.
std::int64_t ModifiedAt(const CapsuleEntry& entry)
{
    static const boost::posix_time::ptime kStart(boost::gregorian::date(1970, 1, 1));
    return entry.modified.is_special() ? 0 : (entry.modified - kStart).total_seconds();
}

} // namespace

bool IsUnreadable(const CapsuleEntry& entry)
{
    return entry.apiVersion.empty() && AsStock(entry) == nullptr;
}

void WriteRow(orvcore::serialization::JSONTextWriter& writer, const CapsuleEntry& entry, const RowFacts& facts)
{
    writer.BeginArray();
    writer.UInt(facts.id);
    if (facts.names.empty()) {
        writer.String(entry.name);
    } else {
        writer.Raw(facts.names);
    }
    writer.UInt(facts.folder);
    writer.String(entry.authorApp);
    writer.UInt(entry.fileSize);
    writer.UInt(entry.durationMs);
    writer.UInt(entry.frameWidth);
    writer.UInt(entry.frameHeight);
    writer.Int(ModifiedAt(entry));
    writer.UInt(FlagsOf(entry));
    writer.BeginArray();
    for (std::size_t i = 0; i < std::min(entry.tags.size(), kMostTags); ++i) {
        writer.String(entry.tags[i]);
    }
    writer.EndArray();
    if (entry.refusal) {
        writer.String(std::string_view(entry.refusal->text));
    }
    writer.EndArray();
}

} // namespace zelt
