#include <orvcore/AtomicFile.h>
#include <orvcore/Files.h>
#include <orvcore/Guid.h>

#include <string_view>

#if defined(_WIN32)
#include <orvcore/detail/WindowsError.h>

#include <windows.h>
#endif

namespace orvcore {

namespace fs = std::filesystem;

namespace {

constexpr std::u8string_view kPrefix = u8".orv-";
constexpr std::u8string_view kSuffix = u8".part";

} // namespace

fs::path PrivateSibling(const fs::path& path)
{
    UTF8String name(kPrefix);
    name += AsUTF8(Guid::Create().ToString());
    name += kSuffix;
    return path.parent_path() / PathFromUTF8(name);
}

bool IsPrivateName(const fs::path& fileName)
{
    const UTF8String name = PathToUTF8(fileName);
    const std::u8string_view view = name;
    return view.starts_with(kPrefix) && view.ends_with(kSuffix) && view.size() > kPrefix.size() + kSuffix.size() &&
           Guid::FromString(AsNarrow(view.substr(kPrefix.size(), view.size() - kPrefix.size() - kSuffix.size())))
               .has_value();
}

#if defined(_WIN32)

namespace {

// Elsewhere the folder's rights decide over a replacement, not the old file's own.
void AllowReplacing(const fs::path& target)
{
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        ::SetFileAttributesW(target.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    }
}

} // namespace

bool RenameOver(const fs::path& from, const fs::path& to, std::error_code& error)
{
    constexpr int kAttempts = 20;
    constexpr DWORD kPauseMs = 50;
    const fs::path source = ToSystemPath(from);
    const fs::path target = ToSystemPath(to);
    for (int attempt = 1;; ++attempt) {
        error.clear();
        if (::MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
            return true;
        }
        const DWORD reason = ::GetLastError();
        error = detail::LastWindowsError();
        const bool held = reason == ERROR_ACCESS_DENIED || reason == ERROR_SHARING_VIOLATION;
        if (!held || IsDirectory(to)) {
            return false;
        }
        AllowReplacing(target);
        // ReplaceFile takes the place even of a file that others have open, which the plain move refuses.
        if (reason == ERROR_ACCESS_DENIED && ::ReplaceFileW(target.c_str(), source.c_str(), nullptr,
                                                            REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr)) {
            error.clear();
            return true;
        }
        if (attempt == kAttempts) {
            return false;
        }
        ::Sleep(kPauseMs);
    }
}

#else

bool RenameOver(const fs::path& from, const fs::path& to, std::error_code& error)
{
    fs::rename(from, to, error);
    return !error;
}

#endif

} // namespace orvcore
