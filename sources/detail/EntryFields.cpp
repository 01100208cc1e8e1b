#include <sources/detail/EntryFields.h>

#include <algorithm>
#include <limits>

namespace orvcapsule::detail {

namespace {

// The number is part of the interface; CapsuleEntry.h has its meaning.
constexpr std::int32_t kFoundOnDisk = 2;

const boost::posix_time::ptime& UnixEpoch()
{
    static const boost::posix_time::ptime epoch(boost::gregorian::date(1970, 1, 1));
    return epoch;
}

template <class Number>
std::uint32_t ToUnsigned(Number value)
{
    return static_cast<std::uint32_t>(
        std::clamp<std::int64_t>(value, 0, std::int64_t{std::numeric_limits<std::uint32_t>::max()}));
}

std::vector<UTF16String> ToWide(const std::vector<std::string>& texts)
{
    std::vector<UTF16String> wide;
    wide.reserve(texts.size());
    std::transform(texts.begin(), texts.end(), std::back_inserter(wide),
                   [](const std::string& text) { return orvcore::ToUTF16(text); });
    return wide;
}

} // namespace

void FillFromCapsule(CapsuleEntry& entry, const Capsule& capsule)
{
    // The entry has its file's name by then.
    if (UTF16String name = capsule.GetDisplayName(); !name.empty()) {
        entry.name = std::move(name);
    }
    const kinlet::SourceInfo composition = capsule.GetSourceInfo();
    entry.durationMs = ToUnsigned(composition.duration.ToMilliseconds());
    entry.frameWidth = ToUnsigned(composition.frameSize.size.x);
    entry.frameHeight = ToUnsigned(composition.frameSize.size.y);
    entry.description = capsule.GetCapsuleDesc();
    entry.authorApp = capsule.GetAuthorApp();
    entry.capsuleID = capsule.GetCapsuleID();
    entry.licenseID = capsule.GetLicenseID();
    entry.mobileCompatibilityVersion = capsule.GetMobileCompatibilityVersion();
    entry.apiVersion = orvcore::ToUTF16(capsule.GetAPIVersion());
    if (entry.GetCreatorApp() == CapsuleEntry::CreatorApp::Tessel) {
        entry.needsTsUpgrade = !capsule.CanUseTSLib(nullptr);
        entry.hasUnsupportedEffects = HasUnsupportedEffects(capsule.GetUsedEffects());
    }
    entry.entryKind = kFoundOnDisk;
    entry.usedFonts = ToWide(capsule.GetUsedFonts());
    entry.tags = ToWide(capsule.GetTags());
}

boost::posix_time::ptime ToPosixTime(orvcore::FileTime time)
{
    using boost::gregorian::date;
    using boost::posix_time::ptime;
    const std::int64_t sinceEpoch = time.time_since_epoch().count();
    // The years that the date library has. A file system holds any number, and a date beyond them would throw out of a
    // listing.
    static const std::int64_t earliest = (ptime(date(1400, 1, 1)) - UnixEpoch()).total_microseconds();
    static const std::int64_t end = (ptime(date(9999, 12, 31)) - UnixEpoch()).total_microseconds();
    return sinceEpoch < earliest || sinceEpoch >= end ? ptime()
                                                      : UnixEpoch() + boost::posix_time::microseconds(sinceEpoch);
}

orvcore::FileTime ToFileTime(const boost::posix_time::ptime& time)
{
    return time.is_special() ? orvcore::FileTime()
                             : orvcore::FileTime(std::chrono::microseconds((time - UnixEpoch()).total_microseconds()));
}

} // namespace orvcapsule::detail
