#pragma once

#include <sources/detail/ListedPackage.h>

#include <orvcore/files/FileSystem.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>

namespace orvcapsule::detail {

enum class PreviewKind { Still, Video };

/// The pictures and videos extracted from packages, as files of the local working folder that outlive the process.
/// Several threads and processes may look and extract at the same time: a file is made under a private name and then
/// renamed, so that one that can be seen is whole.
///
/// Pictures and videos are compressed already, so a preview is hardly larger than its package. Previews of more than
/// kLikelyRatio times the package's size share one allowance for the life of this object, which is one listing: so
/// packages of a few kilobytes cannot fill the disk, however many there are.
class PreviewCache {
public:
    /// Creates the working folder when it is missing.
    explicit PreviewCache(std::string sourceID);

    /// Where the preview of a template belongs. The name is a hash of what tells one state of one package from every
    /// other, so a package that is replaced gets a new file; it says nothing about whether there is one.
    std::filesystem::path PathOf(PreviewKind kind, const orvcore::UTF16String& capsuleID, const ListedPackage& package,
                                 orvcore::FileTime modified) const;

    enum class Outcome {
        There,  ///< the preview is at its path
        None,   ///< the package has none, or one too large for what the allowance still has
        Failed, ///< it is too large, or could not be read or written this time
    };
    struct Extraction {
        Outcome outcome = Outcome::There;
        orvstorage::ZipFailure failure = {}; ///< why it failed
    };
    /// Extracts a preview to `target`. Throws as ListedPackage::Content does.
    /// @param packageSize in bytes
    /// @param target empty: there is no working folder
    Extraction Extract(PreviewKind kind, ListedPackage& package, std::uint64_t packageSize,
                       const std::filesystem::path& target) const;

    static constexpr std::uint64_t kLikelyRatio = 16;
    static constexpr std::uint64_t kAllowance = std::uint64_t{256} << 20; ///< bytes

private:
    bool TakeFromAllowance(std::uint64_t bytes) const;

    mutable std::atomic<std::uint64_t> allowance_ = kAllowance;
    std::string sourceID_;
    std::filesystem::path folder_;
};

} // namespace orvcapsule::detail
