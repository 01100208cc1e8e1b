#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>
#include <validation/Finding.h>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace orvcapsule {

// The size depends on a setting of Boost's that library and host must agree on.
static_assert(sizeof(boost::posix_time::ptime) == sizeof(std::int64_t),
              "build without BOOST_DATE_TIME_POSIX_TIME_STD_CONFIG, as the library is");

/// One template as a browser shows it, made by a graphic source and held by `boost::shared_ptr`. The source fills it
/// completely before handing it out; from then on it is only read, from any thread. Only `flag` may change: the library
/// never touches it, and the host must use it on one thread.
///
/// A package without a definition that this library can read (none, damaged, or newer than the library) is an entry,
/// too: its name is the file's, its `apiVersion` is empty and its `refusal` says why.
class ORVCAPSULE_API CapsuleEntry {
public:
    /// Which application made the template.
    enum class CreatorApp { Other = 0, Tessel = 1 };

    CapsuleEntry();
    CapsuleEntry(const CapsuleEntry&);
    CapsuleEntry(CapsuleEntry&&) noexcept;
    CapsuleEntry& operator=(const CapsuleEntry&);
    CapsuleEntry& operator=(CapsuleEntry&&) noexcept;
    virtual ~CapsuleEntry();

    /// The identifier of the source that made the entry; empty when it has none.
    std::string GetSourceID() const;
    /// The cloud library in which the entry was found; empty for entries of other sources.
    std::string GetLibraryID() const;
    /// `lumoElementID` as a narrow string.
    std::string GetLumoElementID() const;
    /// `Tessel` when `authorApp` is exactly "tsfx".
    CreatorApp GetCreatorApp() const;
    /// Path of a preview video that an entry works out by itself. Empty here: a plain entry's video lies at
    /// `videoPreviewPath`.
    virtual orvcore::UTF8String GetVideoPreviewPath() const;
    /// True when `videoPreviewPath` is set.
    bool SupportVideoPlayback() const;

    /// The same package with the same thumbnail: compares `path` and `thumbnailPath` only.
    bool operator==(const CapsuleEntry& other) const;
    /// The order by name, code unit by code unit: no case folding, no collation.
    bool operator<(const CapsuleEntry& other) const;

    /// Full path of the template package, or of a library's copy of it.
    orvcore::UTF8String path;
    /// Display name: the template's, or the package file's title when the template has none.
    orvcore::UTF16String name;
    /// Spare; left empty by the library.
    orvcore::UTF8String field3;
    /// The source's identifier, then, where there is one, the folder key or library under which the entry was found.
    std::vector<std::string> sourcePath;
    /// Spare; left empty by the library.
    orvcore::UTF8String field5;
    /// Path of the still preview; empty when the template has none.
    orvcore::UTF8String thumbnailPath;
    /// Path of the preview video; empty when the template has none.
    orvcore::UTF8String videoPreviewPath;
    /// @name As stored in the template's definition
    /// @{
    orvcore::UTF16String capsuleID;
    orvcore::UTF16String licenseID;
    orvcore::UTF16String mobileCompatibilityVersion;
    orvcore::UTF16String apiVersion;
    /// @}
    /// The cloud library's name for the entry; empty for entries of other sources.
    orvcore::UTF8String lumoElementID;
    /// Size of the package file in bytes.
    std::uint64_t fileSize = 0;
    /// Frame size in pixels.
    std::uint32_t frameWidth = 0;
    std::uint32_t frameHeight = 0;
    /// Duration in milliseconds, rounded down; 0 when unknown.
    std::uint32_t durationMs = 0;
    /// True when the template needs a newer version of the compositing host's library.
    bool needsTsUpgrade = false;
    bool hasUnsupportedEffects = false;
    /// 2 for a template found on disk, 0 when it has no definition, or one that is refused.
    std::int32_t entryKind = 0;
    /// In the definition's order.
    std::vector<orvcore::UTF16String> usedFonts;
    orvcore::UTF16String description;
    std::vector<orvcore::UTF16String> tags;
    /// Identifier of the application that made the template: "tsfx", "crvd" or "brsk".
    orvcore::UTF16String authorApp;
    /// Last change of the package file (UTC); `not_a_date_time` when unknown.
    boost::posix_time::ptime modified;
    /// Why the template cannot be used; null when its definition was read. It costs no second reading of the package.
    std::shared_ptr<const Finding> refusal;
    /// Why a poster or a video that the package has is not shown; null when nothing failed. Those that a listing's
    /// allowance (PreviewLimit.h) does not reach for are left out without a failure.
    std::shared_ptr<const Finding> previewFailure;
    /// Free for the host.
    bool flag = false;
};

} // namespace orvcapsule
