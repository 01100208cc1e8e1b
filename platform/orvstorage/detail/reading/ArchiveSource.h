#pragma once

#include <orvstorage/detail/reading/ArchiveFile.h>
#include <orvstorage/detail/reading/Libzip.h>

#include <functional>

namespace orvstorage::detail {

/// Opens the zip library's handle on a file of ours for reading. Several handles may share one file, each used by
/// one thread.
ArchiveHandle OpenForReading(const std::shared_ptr<const ArchiveFile>& file, ZipFailure& failure);

/// Opens a handle whose changes, when it is closed, make a new file that takes the place of `path` in one step.
/// `old` is the archive to start from, or null to start from nothing. `approve`, when there is one, is asked when all
/// is written; its false gives the new file up.
ArchiveHandle OpenForWriting(std::shared_ptr<const ArchiveFile> old, const std::filesystem::path& path,
                             std::function<bool()> approve, ZipFailure& failure);

} // namespace orvstorage::detail
