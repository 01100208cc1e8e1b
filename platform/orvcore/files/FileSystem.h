#pragma once

#include <orvcore/files/Paths.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <system_error>

namespace orvcore {

/// A moment of the system clock (UTC) as a file system stores it; every system's file times fit.
using FileTime = std::chrono::sys_time<std::chrono::microseconds>;

/// What lies at a path.
enum class FileKind {
    Nothing,
    File,
    Directory,
    Link,  ///< a symbolic link, or a junction on Windows
    Other, ///< a device, a pipe, a socket
};

/// What the system tells of a path in one question.
struct FileInfo {
    FileKind kind = FileKind::Nothing;
    std::uint64_t size = 0; ///< bytes; of files only
    FileTime modified{};    ///< last change of the content, rounded down
    FileTime replaced{};    ///< when the system itself last saw a new state or a new file here: programs do not set it

    bool operator==(const FileInfo&) const = default;
};

/// @name The system's file operations
/// The counterparts of `std::filesystem` for paths of any length, names in any script and, on Windows, links; the
/// standard library's own stop at some of these on Windows. Failures of the file system do not throw: they are put
/// into `error`, which is otherwise cleared, and compares and reads the same on every system. Thread-safe as far
/// as the file system is.
/// @{

/// What lies at `path` itself: a link is not followed. Nothing at the path is no error.
ORVPLATFORM_API FileInfo InspectPath(const std::filesystem::path& path, std::error_code& error);
/// What `path` leads to: links are followed, and a link that leads nowhere is nothing.
ORVPLATFORM_API FileInfo InspectTarget(const std::filesystem::path& path, std::error_code& error);

/// Who may use a new folder, on systems where its maker decides that.
enum class FolderAccess {
    Usual,     ///< as the process is set up
    OwnerOnly, ///< nobody else may look into it
    Shared,    ///< everybody may put things into it, and remove only their own
};

/// Creates one folder. False without an error when it was there before.
ORVPLATFORM_API bool MakeDirectory(const std::filesystem::path& path, std::error_code& error,
                                   FolderAccess access = FolderAccess::Usual);
/// Creates a folder and its missing parents. False without an error when it was there before.
ORVPLATFORM_API bool MakeDirectories(const std::filesystem::path& path, std::error_code& error);

/// Deletes a file, a link (never what it leads to) or an empty folder. False without an error when nothing was there.
ORVPLATFORM_API bool RemoveOne(const std::filesystem::path& path, std::error_code& error);

/// Deletes what is at `path`, a folder with all that it holds; links are removed, never followed.
ORVPLATFORM_API void RemoveAll(const std::filesystem::path& path, std::error_code& error);

/// The absolute path of what exists at `path`, without links, "." and "..".
ORVPLATFORM_API std::filesystem::path RealPath(const std::filesystem::path& path, std::error_code& error);
/// True when both paths lead to the same file or folder; false too when either leads nowhere.
ORVPLATFORM_API bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b) noexcept;

/// Tells of each thing in a folder, in no certain order: its path, which is the folder's with the name appended, and
/// its kind as InspectPath would find it. The visitor's false ends the reading, which is no error.
ORVPLATFORM_API void ReadDirectory(const std::filesystem::path& directory,
                                   const std::function<bool(const std::filesystem::path& path, FileKind kind)>& visit,
                                   std::error_code& error);

/// Gives the file at `from`, a link itself, a second name `to`, where nothing is. False where the file system has one
/// name for a file only, or for another reason.
ORVPLATFORM_API bool MakeHardLink(const std::filesystem::path& from, const std::filesystem::path& to,
                                  std::error_code& error);

/// Whether what lies at `path` itself belongs to the user this process works for. False when that cannot be found out;
/// true for all there is where files are not told apart by their owners.
ORVPLATFORM_API bool IsOwn(const std::filesystem::path& path) noexcept;
/// @}

} // namespace orvcore
