#pragma once

#include <orvstorage/detail/reading/ArchiveFile.h>
#include <orvstorage/detail/reading/Libzip.h>

#include <functional>
#include <optional>

namespace orvstorage::detail {

/// Opens the zip library's handle on a file of ours for reading. Several handles may share one file, each used by
/// one thread.
ZipResult<ArchiveHandle> OpenForReading(const std::shared_ptr<const ArchiveFile>& file);

/// How a new archive takes its place.
struct Placing {
    std::filesystem::path path;
    /// Asked when all is written; its false gives the new file up as cancelled. May be empty.
    std::function<bool()> approve;
    /// Asked, once, when no other writer can come between; its false gives the new file up because the place has
    /// changed.
    std::function<bool()> isUnchanged;
    /// What the new archive's file is then known by.
    std::optional<orvcore::detail::FileVersion>& placed;
    /// Told of each piece that is written; its false gives the new file up as cancelled. May be empty.
    std::function<bool(std::uint64_t size)> written = {};
};

/// Opens a handle whose changes, when it is closed, make a new file that takes its place in one step. `old` is the
/// archive to start from, or null to start from nothing.
ZipResult<ArchiveHandle> OpenForWriting(std::shared_ptr<const ArchiveFile> old, Placing placing);

} // namespace orvstorage::detail
