#pragma once

#include <orvcore/ResultCode.h>
#include <orvcore/files/FileSystem.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

namespace orvcore {

/// @name Whole files
/// As the operations of FileSystem.h, each throws `std::filesystem::filesystem_error` or, in its other form, puts the
/// failure into `error`. Thread-safe as far as the file system is.
/// @{

/// What to do with a file that stands where another is to go.
enum class IfExists { Keep, Overwrite };

/// How safe a file is when a call that wrote it returns.
enum class Durability {
    Cached, ///< whole for every program of this machine
    OnDisk, ///< and its content is on the disk before it takes the old one's place
};

/// Copies the content of one file over `to`, which then is wholly the new or (after a failure) wholly the old file.
/// A link at `to` is followed. A file that is replaced leaves its access rights to the new one; where nothing was,
/// those of `from` are taken. What killed copies left in the folder of `to` more than a day ago is removed.
/// @param progress may be empty; told the fraction done, at last 1.0 before the file takes its place. After its false
///        `to` is the old file, and the error `std::errc::operation_canceled`.
ORVPLATFORM_API void CopyOneFile(const std::filesystem::path& from, const std::filesystem::path& to,
                                 Durability durability = Durability::Cached,
                                 const std::function<bool(double fraction)>& progress = {});
/// @return whether `to` is the new file
ORVPLATFORM_API bool CopyOneFile(const std::filesystem::path& from, const std::filesystem::path& to,
                                 Durability durability, const std::function<bool(double fraction)>& progress,
                                 std::error_code& error);

/// Reads a file in one block, as it is: no decoding. One that is larger than `maxBytes` is the error
/// `std::errc::file_too_large`.
ORVPLATFORM_API std::string ReadWholeFile(const std::filesystem::path& path,
                                          std::uint64_t maxBytes = std::uint64_t{1} << 30);
/// @return empty with an error
ORVPLATFORM_API std::string ReadWholeFile(const std::filesystem::path& path, std::uint64_t maxBytes,
                                          std::error_code& error);

/// Writes `size` bytes over the file at `path`, which others may have open meanwhile. The file is created when
/// missing; its folder is not. After a failed write the broken file is removed.
ORVPLATFORM_API void WriteBufferToFile(const std::filesystem::path& path, const void* data, std::size_t size);
/// @return the step that failed as hosts know it: kResultOK, kResultFileNotOpened or kResultFileNotWritten; the reason
///         is in `error`
ORVPLATFORM_API ResultCode WriteBufferToFile(const std::filesystem::path& path, const void* data, std::size_t size,
                                             std::error_code& error);
/// @}

/// @name Folders' contents
/// @{

/// What one folder holds directly, each list in name order, so that every system gives the same order.
struct ORVPLATFORM_API DirectoryListing {
    std::vector<std::filesystem::path> directories; ///< true folders; a symbolic link is never one
    std::vector<std::filesystem::path> files;       ///< everything else, symbolic links to folders left out
};

/// Lists a folder. One that does not exist or cannot be read throws `std::filesystem::filesystem_error`, or is put into
/// `error`, which is otherwise cleared; what had been read by then is listed.
ORVPLATFORM_API DirectoryListing ListDirectory(const std::filesystem::path& directory);
ORVPLATFORM_API DirectoryListing ListDirectory(const std::filesystem::path& directory, std::error_code& error);
/// @}

} // namespace orvcore
