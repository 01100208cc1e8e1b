#include <orvcore/files/shared/RenameOver.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/detail/WindowsError.h>

#include <windows.h>

#include <cstring>
#include <vector>

// To replace a file that somebody has open is what Windows forbids most. Three ways are tried, from the best to the
// worst: the plain move, the move with the semantics of POSIX (Windows 10 on NTFS: a process that has the old file open
// keeps it), and ReplaceFile. Virus scanners and indexers open every new file for a moment, so that a refusal is mostly
// over in some milliseconds: 25 attempts, 20 ms apart, and the better two each time.

namespace orvcore {

namespace fs = std::filesystem;

namespace {

// Elsewhere the folder's rights decide over a replacement, not the old file's own.
void AllowReplacing(const fs::path& target)
{
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        ::SetFileAttributesW(target.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    }
}

// The rename that takes the place of a file that others have open, in one step; they keep the old content. Windows 10
// has it, on its own file system.
bool RenameOverOpenFile(const fs::path& source, const fs::path& target)
{
    constexpr auto kRenameEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22); // FileRenameInfoEx
    constexpr DWORD kReplaceWithPosixSemantics = 0x1 | 0x2;
    std::error_code error;
    const std::wstring name = fs::absolute(target, error).native();
    const std::size_t nameSize = name.size() * sizeof(wchar_t);
    std::vector<char> buffer(sizeof(FILE_RENAME_INFO) + nameSize);
    auto* const info = reinterpret_cast<FILE_RENAME_INFO*>(buffer.data());
    // FILE_RENAME_INFO begins with a flag for replacing, in whose four bytes the newer call takes these flags. Not
    // every header for Windows knows the class and the flags.
    std::memcpy(buffer.data(), &kReplaceWithPosixSemantics, sizeof kReplaceWithPosixSemantics);
    info->FileNameLength = static_cast<DWORD>(nameSize);
    std::memcpy(info->FileName, name.data(), nameSize);
    const HANDLE file =
        ::CreateFileW(source.c_str(), DELETE | SYNCHRONIZE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool renamed = ::SetFileInformationByHandle(file, kRenameEx, info, static_cast<DWORD>(buffer.size())) != 0;
    ::CloseHandle(file);
    return renamed;
}

} // namespace

// A virus scanner or a reader may hold the target for a moment, so the plain move is tried for a while; it replaces in
// one step too. Only ReplaceFile, which comes last, leaves an instant without a file.
bool RenameOver(const fs::path& from, const fs::path& to, std::error_code& error)
{
    constexpr int kAttempts = 25;
    constexpr DWORD kPauseMs = 20;
    const fs::path source = ToSystemPath(from);
    const fs::path target = ToSystemPath(to);
    if (!CheckReplaceable(to, error)) {
        return false;
    }
    for (int attempt = 1;; ++attempt) {
        if (::MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
            return true;
        }
        const DWORD reason = ::GetLastError();
        const std::error_code failure = detail::LastWindowsError();
        // These two mean "open elsewhere" or "read-only"; no other error goes away by itself.
        if (reason != ERROR_ACCESS_DENIED && reason != ERROR_SHARING_VIOLATION) {
            error = failure;
            return false;
        }
        AllowReplacing(target);
        if (RenameOverOpenFile(source, target)) {
            return true;
        }
        if (attempt == kAttempts) {
            const bool replaced = ::ReplaceFileW(target.c_str(), source.c_str(), nullptr,
                                                 REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr) != 0;
            // The first way's reason tells more: ReplaceFile's are its own.
            error = replaced ? std::error_code() : failure;
            return replaced;
        }
        ::Sleep(kPauseMs);
    }
}

} // namespace orvcore
