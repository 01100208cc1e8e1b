#pragma once

#include <package/CapsuleZip.h>
#include <sources/CapsuleEntry.h>

#include <orvcore/FileSystem.h>

#include <filesystem>
#include <string>

namespace orvcapsule::detail {

enum class PreviewKind { Still, Video };

/// The pictures and videos extracted from packages, as files of the local working folder that outlive the process.
/// Several threads and processes may look and extract at the same time: a file is made under a private name and then
/// renamed, so that one that can be seen is whole. Nothing here throws for the file system's sake.
class PreviewCache {
public:
    /// Creates the working folder when it is missing.
    explicit PreviewCache(std::string sourceID);

    /// Where the preview of the template in `package` belongs. The name is a hash of what tells one state of one
    /// package from every other, so a package that is replaced gets a new file; it says nothing about whether there is
    /// one.
    std::filesystem::path PathOf(PreviewKind kind, const CapsuleEntry& entry, const std::filesystem::path& package,
                                 orvcore::FileTime modified) const;

    /// True when the preview is at `target` afterwards, extracted now or before.
    bool Provide(PreviewKind kind, const CapsuleZip& package, const std::filesystem::path& target) const;

private:
    std::string sourceID_;
    std::filesystem::path folder_;
};

} // namespace orvcapsule::detail
