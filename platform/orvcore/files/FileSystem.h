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

/// @name File operations
/// The counterparts of `std::filesystem` for paths of any length, names in any script and, on Windows, links; the
/// standard library's own stop at some of these on Windows. An operation has two forms: one puts a failure into
/// `error`, which is otherwise cleared; the other throws `std::filesystem::filesystem_error`. A code compares and reads
/// the same on every system. A path that can name no file leads to nothing. Thread-safe as far as the file system is.
/// @{

/// What lies at `path` itself: a link is not followed. Nothing at the path is no error.
ORVPLATFORM_API FileInfo InspectPath(const std::filesystem::path& path);
ORVPLATFORM_API FileInfo InspectPath(const std::filesystem::path& path, std::error_code& error);
/// What `path` leads to: links are followed, and a link that leads nowhere is nothing.
ORVPLATFORM_API FileInfo InspectTarget(const std::filesystem::path& path);
ORVPLATFORM_API FileInfo InspectTarget(const std::filesystem::path& path, std::error_code& error);

/// True when `path` leads to something (a file, a folder); false too when that cannot be found out, as with the two
/// questions below. InspectTarget tells these cases apart.
ORVPLATFORM_API bool Exists(const std::filesystem::path& path) noexcept;
/// True when `path` leads to a regular file.
ORVPLATFORM_API bool IsFile(const std::filesystem::path& path) noexcept;
/// True when `path` leads to a folder.
ORVPLATFORM_API bool IsDirectory(const std::filesystem::path& path) noexcept;

/// Who may use a new folder, on systems where its maker decides that.
enum class FolderAccess {
    Usual,     ///< as the process is set up
    OwnerOnly, ///< nobody else may look into it
    Shared,    ///< everybody may put things into it, and remove only their own
};

/// Creates one folder. False without an error when it was there before.
ORVPLATFORM_API bool MakeDirectory(const std::filesystem::path& path, FolderAccess access = FolderAccess::Usual);
ORVPLATFORM_API bool MakeDirectory(const std::filesystem::path& path, std::error_code& error,
                                   FolderAccess access = FolderAccess::Usual);
/// Creates a folder and its missing parents; one that is there already is no error. After a failure none is left.
ORVPLATFORM_API void EnsureDirectory(const std::filesystem::path& directory);
ORVPLATFORM_API void EnsureDirectory(const std::filesystem::path& directory, std::error_code& error);

/// Deletes a file, a link (never what it leads to) or an empty folder. False without an error when nothing was there.
ORVPLATFORM_API bool RemoveOne(const std::filesystem::path& path);
ORVPLATFORM_API bool RemoveOne(const std::filesystem::path& path, std::error_code& error);

/// Deletes what is at `path`, a folder with all that it holds; links are removed, never followed. Nothing at the path
/// is no error.
ORVPLATFORM_API void RemoveTree(const std::filesystem::path& path);
ORVPLATFORM_API void RemoveTree(const std::filesystem::path& path, std::error_code& error) noexcept;

/// The absolute path of what exists at `path`, without links, "." and "..".
ORVPLATFORM_API std::filesystem::path RealPath(const std::filesystem::path& path);
ORVPLATFORM_API std::filesystem::path RealPath(const std::filesystem::path& path, std::error_code& error);
/// True when both paths lead to the same file or folder; false too when either leads nowhere.
ORVPLATFORM_API bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b) noexcept;

/// Told of a path and its kind as InspectPath would find it. Its false ends the reading, which is no error.
using DirectoryVisitor = std::function<bool(const std::filesystem::path& path, FileKind kind)>;
/// Tells of each thing in a folder, in no certain order; its path is the folder's with the name appended.
ORVPLATFORM_API void ReadDirectory(const std::filesystem::path& directory, const DirectoryVisitor& visit);
ORVPLATFORM_API void ReadDirectory(const std::filesystem::path& directory, const DirectoryVisitor& visit,
                                   std::error_code& error);

/// Gives the file at `from`, a link itself, a second name `to`, where nothing is. Some file systems have one name for a
/// file only.
ORVPLATFORM_API void MakeHardLink(const std::filesystem::path& from, const std::filesystem::path& to);
/// @return whether it has the name
ORVPLATFORM_API bool MakeHardLink(const std::filesystem::path& from, const std::filesystem::path& to,
                                  std::error_code& error);

/// Whether what lies at `path` itself belongs to the user this process works for. False when that cannot be found out;
/// true for all there is where files are not told apart by their owners.
ORVPLATFORM_API bool IsOwn(const std::filesystem::path& path) noexcept;
/// @}

} // namespace orvcore
