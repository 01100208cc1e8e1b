#include <orvcore/files/FileError.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/detail/WindowsError.h>
#include <orvcore/files/shared/NativeFile.h>

#include <windows.h>

#include <algorithm>
#include <utility>

// All files are opened with all sharing, FILE_SHARE_DELETE too: so others may read, rename and delete them meanwhile,
// as they may elsewhere. Offsets go with each call (OVERLAPPED on a file that was not opened for it), so that threads
// can read one file without sharing a position.

namespace orvcore::detail {

namespace {

constexpr std::size_t kLargestCall = std::size_t{1} << 30;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE AsHandle(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

OVERLAPPED At(std::uint64_t offset)
{
    OVERLAPPED position{};
    position.Offset = static_cast<DWORD>(offset);
    position.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return position;
}

} // namespace

NativeFile NativeFile::Open(const std::filesystem::path& path, Mode mode, std::error_code& error)
{
    error.clear();
    NativeFile file;
    if (!IsUsablePath(path)) {
        error = std::make_error_code(std::errc::invalid_argument);
        return file;
    }
    const DWORD access = mode == Mode::Read ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    // CREATE_ALWAYS empties what is there and keeps the file itself, as O_TRUNC does.
    const DWORD creation = mode == Mode::Read ? OPEN_EXISTING : mode == Mode::CreateNew ? CREATE_NEW : CREATE_ALWAYS;
    const HANDLE handle =
        ::CreateFileW(ToSystemPath(path).c_str(), access, kShareAll, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        error = LastWindowsError();
        // What the system says of a folder that is opened as a file.
        if (error == std::errc::permission_denied && IsDirectory(path)) {
            error = std::make_error_code(std::errc::is_a_directory);
        }
    }
    file.handle_ = reinterpret_cast<std::intptr_t>(handle);
    if (!error && mode == Mode::Read && ::GetFileType(handle) != FILE_TYPE_DISK) {
        error = FileError::NotARegularFile;
        file = NativeFile();
    }
    return file;
}

std::uint64_t NativeFile::Size(std::error_code& error) const
{
    error.clear();
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(AsHandle(handle_), &size)) {
        error = LastWindowsError();
    }
    return static_cast<std::uint64_t>(size.QuadPart);
}

FileVersion NativeFile::Version(std::error_code& error) const
{
    error.clear();
    BY_HANDLE_FILE_INFORMATION data{};
    if (!::GetFileInformationByHandle(AsHandle(handle_), &data)) {
        error = LastWindowsError();
        return {};
    }
    // A deleted file stays until all that have it open have closed it.
    FILE_STANDARD_INFO standard{};
    if (::GetFileInformationByHandleEx(AsHandle(handle_), FileStandardInfo, &standard, sizeof(standard)) &&
        standard.DeletePending) {
        error = std::make_error_code(std::errc::no_such_file_or_directory);
        return {};
    }
    const auto joined = [](DWORD high, DWORD low) { return static_cast<std::uint64_t>(high) << 32 | low; };
    const FILETIME& time = data.ftLastWriteTime;
    return {data.dwVolumeSerialNumber, joined(data.nFileIndexHigh, data.nFileIndexLow),
            joined(data.nFileSizeHigh, data.nFileSizeLow), joined(time.dwHighDateTime, time.dwLowDateTime)};
}

std::size_t NativeFile::ReadAt(std::uint64_t offset, void* data, std::size_t size, std::error_code& error) const
{
    error.clear();
    std::size_t done = 0;
    while (done < size) {
        OVERLAPPED position = At(offset + done);
        DWORD got = 0;
        const auto piece = static_cast<DWORD>(std::min(size - done, kLargestCall));
        if (!::ReadFile(AsHandle(handle_), static_cast<char*>(data) + done, piece, &got, &position)) {
            // With an offset in the call the end of the file is an error, otherwise a read of nothing; both are the end
            // here.
            if (::GetLastError() != ERROR_HANDLE_EOF) {
                error = LastWindowsError();
            }
            break;
        }
        if (got == 0) {
            break;
        }
        done += got;
    }
    return done;
}

bool NativeFile::WriteAt(std::uint64_t offset, const void* data, std::size_t size, std::error_code& error)
{
    error.clear();
    std::size_t done = 0;
    while (done < size) {
        OVERLAPPED position = At(offset + done);
        DWORD put = 0;
        const auto piece = static_cast<DWORD>(std::min(size - done, kLargestCall));
        if (!::WriteFile(AsHandle(handle_), static_cast<const char*>(data) + done, piece, &put, &position)) {
            error = LastWindowsError();
            return false;
        }
        done += put;
    }
    return true;
}

// There is no such request here; FlushToDisk does all of it at the end.
void NativeFile::StartWriteback(std::uint64_t, std::uint64_t) noexcept {}

bool NativeFile::FlushToDisk(std::error_code& error)
{
    error.clear();
    if (!::FlushFileBuffers(AsHandle(handle_))) {
        error = LastWindowsError();
    }
    return !error;
}

void NativeFile::CopyPermissions(const std::filesystem::path&) noexcept
{
    // A new file takes its rights from the folder, as the one it replaces did.
}

bool NativeFile::Close(std::error_code& error)
{
    error.clear();
    if (handle_ != kNoHandle && !::CloseHandle(AsHandle(std::exchange(handle_, kNoHandle)))) {
        error = LastWindowsError();
    }
    return !error;
}

} // namespace orvcore::detail
