#if !defined(_WIN32)

#include <orvcore/FileSystem.h>

#include <cerrno>
#include <sys/stat.h>

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

FileInfo Inspect(int (*ask)(const char*, struct stat*), const fs::path& path, std::error_code& error)
{
    error.clear();
    if (!IsUsablePath(path)) {
        return {};
    }
    struct stat status {};
    if (ask(path.c_str(), &status) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) {
            error = {errno, std::generic_category()};
        }
        return {};
    }
    using namespace std::chrono;
    FileInfo info;
    info.kind = KindOf(status.st_mode);
    info.size = info.kind == FileKind::File ? static_cast<std::uint64_t>(status.st_size) : 0;
    info.written = sys_time<microseconds>(seconds(status.st_mtim.tv_sec) +
                                          duration_cast<microseconds>(nanoseconds(status.st_mtim.tv_nsec)));
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

bool MakeDirectory(const fs::path& path, std::error_code& error)
{
    return fs::create_directory(path, error);
}

bool MakeDirectories(const fs::path& path, std::error_code& error)
{
    return fs::create_directories(path, error);
}

bool RemoveOne(const fs::path& path, std::error_code& error)
{
    return fs::remove(path, error);
}

void RemoveAll(const fs::path& path, std::error_code& error)
{
    fs::remove_all(path, error);
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

void ReadDirectory(const fs::path& directory, const std::function<bool(const fs::path&, const FileInfo&)>& visit,
                   std::error_code& error)
{
    fs::directory_iterator at(directory, error);
    for (; !error && at != fs::directory_iterator(); at.increment(error)) {
        std::error_code ignored;
        const FileInfo info = InspectPath(at->path(), ignored);
        if (info.kind != FileKind::Nothing && !visit(at->path(), info)) {
            return;
        }
    }
}

void CopyToNewFile(const fs::path& from, const fs::path& to, std::error_code& error)
{
    fs::copy_file(from, to, error);
}

} // namespace orvcore

#endif
