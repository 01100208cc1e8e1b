#include <orvcore/files/FileSystem.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

// The operations of FileSystem.h. The standard library's own serve here: they take paths of any bytes. What is asked of
// the system directly is what they do not tell, or not in one question: all facts of a path at once, with the time that
// no program sets back (st_ctime), and the owner.

namespace orvcore {

namespace fs = std::filesystem;

namespace {

FileKind KindOf(mode_t mode)
{
    return S_ISREG(mode)   ? FileKind::File
           : S_ISDIR(mode) ? FileKind::Directory
           : S_ISLNK(mode) ? FileKind::Link
                           : FileKind::Other;
}

// As the folder's listing told, mostly without another question to the system.
FileKind KindOf(const fs::directory_entry& entry)
{
    std::error_code ignored;
    return entry.is_symlink(ignored)        ? FileKind::Link
           : entry.is_directory(ignored)    ? FileKind::Directory
           : entry.is_regular_file(ignored) ? FileKind::File
                                            : FileKind::Other;
}

FileTime TimeOf(const timespec& time)
{
    constexpr std::int64_t kFarSeconds = 9'000'000'000'000; // some file systems take any number for a time
    const std::int64_t seconds = std::clamp<std::int64_t>(time.tv_sec, -kFarSeconds, kFarSeconds);
    return FileTime(std::chrono::microseconds(seconds * 1'000'000 + time.tv_nsec / 1000));
}

FileInfo Inspect(int (*ask)(const char*, struct stat*), const fs::path& path, std::error_code& error)
{
    error.clear();
    if (!IsUsablePath(path)) {
        return {};
    }
    struct stat status {};
    if (ask(path.c_str(), &status) != 0) {
        // "a/b" where "a" is a file: nothing is there, and no error either. Windows has other numbers for the same, see
        // WindowsError.cpp.
        if (errno != ENOENT && errno != ENOTDIR) {
            error = {errno, std::generic_category()};
        }
        return {};
    }
    FileInfo info;
    info.kind = KindOf(status.st_mode);
    info.size = info.kind == FileKind::File ? static_cast<std::uint64_t>(status.st_size) : 0;
    info.modified = TimeOf(status.st_mtim);
    info.replaced = TimeOf(status.st_ctim);
    return info;
}

} // namespace

FileInfo InspectPath(const fs::path& path, std::error_code& error)
{
    return Inspect(&::lstat, path, error);
}

FileInfo InspectTarget(const fs::path& path, std::error_code& error)
{
    return Inspect(&::stat, path, error);
}

bool MakeDirectory(const fs::path& path, std::error_code& error, FolderAccess access)
{
    // For a path that can name no folder; the system's own answer takes its place below.
    error = std::make_error_code(std::errc::invalid_argument);
    if (!IsUsablePath(path)) {
        return false;
    }
    error.clear();
    if (::mkdir(path.c_str(), access == FolderAccess::OwnerOnly ? 0700 : 0777) == 0) {
        // The process's mask takes rights away from a new folder, and knows no sticky one.
        if (access == FolderAccess::Shared && ::chmod(path.c_str(), 01777) != 0) {
            error = {errno, std::generic_category()};
        }
        return true;
    }
    // A system may give any of several reasons (it exists, no rights, read-only) for a folder that is there.
    error = {errno, std::generic_category()};
    std::error_code ignored;
    if (InspectTarget(path, ignored).kind == FileKind::Directory) {
        error.clear();
    }
    return false;
}

bool RemoveOne(const fs::path& path, std::error_code& error)
{
    error.clear();
    return IsUsablePath(path) && fs::remove(path, error);
}

void RemoveTree(const fs::path& path, std::error_code& error) noexcept
{
    try {
        error.clear();
        if (IsUsablePath(path)) {
            fs::remove_all(path, error);
        }
    } catch (const std::bad_alloc&) {
        error = std::make_error_code(std::errc::not_enough_memory);
    }
}

fs::path RealPath(const fs::path& path, std::error_code& error)
{
    return fs::canonical(path, error);
}

bool IsSameFile(const fs::path& a, const fs::path& b) noexcept
{
    std::error_code ignored;
    return fs::equivalent(a, b, ignored);
}

void ReadDirectory(const fs::path& directory, const DirectoryVisitor& visit, std::error_code& error)
{
    // Without the option to skip folders without rights: the caller must learn that something is missing.
    fs::directory_iterator at(directory, error);
    for (; !error && at != fs::directory_iterator(); at.increment(error)) {
        if (!visit(at->path(), KindOf(*at))) {
            return;
        }
    }
}

bool MakeHardLink(const fs::path& from, const fs::path& to, std::error_code& error)
{
    fs::create_hard_link(from, to, error);
    return !error;
}

bool IsOwn(const fs::path& path) noexcept
{
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && status.st_uid == ::geteuid();
}

} // namespace orvcore
