#include <orvcore/FileFacts.h>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/stat.h>

#include <algorithm>
#endif

namespace orvcore {

namespace fs = std::filesystem;
using std::chrono::microseconds;

#if defined(_WIN32)

namespace {

// File times count 100 ns from 1601-01-01.
constexpr std::int64_t kUnixEpochMicroseconds = 11644473600000000;

std::uint64_t Join(DWORD high, DWORD low)
{
    return std::uint64_t{high} << 32 | low;
}

FileTime ToFileTime(const FILETIME& time)
{
    const std::uint64_t ticks = Join(time.dwHighDateTime, time.dwLowDateTime);
    return FileTime(microseconds(static_cast<std::int64_t>(ticks / 10) - kUnixEpochMicroseconds));
}

template <class Attributes>
std::optional<FileFacts> FactsOf(const Attributes& found)
{
    if ((found.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) != 0) {
        return std::nullopt;
    }
    return FileFacts{Join(found.nFileSizeHigh, found.nFileSizeLow), ToFileTime(found.ftLastWriteTime),
                     ToFileTime(found.ftCreationTime)};
}

std::optional<FileFacts> FactsBehindLink(const fs::path& systemPath)
{
    const HANDLE file =
        ::CreateFileW(systemPath.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    BY_HANDLE_FILE_INFORMATION found{};
    const bool isKnown = ::GetFileInformationByHandle(file, &found) != 0;
    ::CloseHandle(file);
    return isKnown ? FactsOf(found) : std::nullopt;
}

} // namespace

std::optional<FileFacts> GetFileFacts(const fs::path& path)
{
    if (!IsUsablePath(path)) {
        return std::nullopt;
    }
    const fs::path systemPath = ToSystemPath(path);
    WIN32_FILE_ATTRIBUTE_DATA found{};
    if (!::GetFileAttributesExW(systemPath.c_str(), GetFileExInfoStandard, &found)) {
        return std::nullopt;
    }
    const bool leadsOn = (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return leadsOn ? FactsBehindLink(systemPath) : FactsOf(found);
}

#else

namespace {

FileTime ToFileTime(const timespec& time)
{
    constexpr std::int64_t kFarSeconds = 9'000'000'000'000; // some file systems take any number for a time
    const std::int64_t seconds = std::clamp<std::int64_t>(time.tv_sec, -kFarSeconds, kFarSeconds);
    return FileTime(microseconds(seconds * 1'000'000 + time.tv_nsec / 1000));
}

} // namespace

std::optional<FileFacts> GetFileFacts(const fs::path& path)
{
    struct stat found {};
    if (!IsUsablePath(path) || ::stat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) {
        return std::nullopt;
    }
    return FileFacts{static_cast<std::uint64_t>(found.st_size), ToFileTime(found.st_mtim), ToFileTime(found.st_ctim)};
}

#endif

} // namespace orvcore
