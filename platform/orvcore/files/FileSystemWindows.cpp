#include <orvcore/files/FileSystem.h>
#include <orvcore/files/WalkTree.h>
#include <orvcore/files/detail/WindowsError.h>

#include <windows.h>

#include <memory>
#include <new>
#include <string_view>
#include <type_traits>

// The operations of FileSystem.h by the system's own calls. The standard library's would do for most, but they stop at
// 260 characters, and the one that builds this library for Windows takes no symbolic link or junction for what it is.
//
// Two things differ from the other systems, and all below is about them. A file that somebody has open can be neither
// deleted nor replaced, unless it was opened with FILE_SHARE_DELETE, as files of ours are but for locks. And a link is
// a folder or a file with a reparse point, whose tag only a search tells.

namespace orvcore {

namespace fs = std::filesystem;
using detail::LastWindowsError;

namespace {

struct CloseFile {
    void operator()(HANDLE handle) const
    {
        ::CloseHandle(handle);
    }
};
using FileHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, CloseFile>;

// Opens what a path leads to, a folder too, only to ask about it; empty with the system's last error otherwise.
FileHandle OpenToAsk(const fs::path& path)
{
    // Rights to the attributes alone: a process that has the file open without sharing it does not stop this.
    const HANDLE handle = ::CreateFileW(ToSystemPath(path).c_str(), FILE_READ_ATTRIBUTES,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    return FileHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

FileTime TimeOf(const FILETIME& time)
{
    using namespace std::chrono;
    using Ticks = duration<std::int64_t, std::ratio<1, 10'000'000>>;
    constexpr Ticks kUnixEpoch(116'444'736'000'000'000); // counted from 1601
    const auto ticks = static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    return FileTime(duration_cast<microseconds>(Ticks(ticks) - kUnixEpoch));
}

// `Data` is any of the system's structures that describe a file; they name their members alike.
template <class Data>
FileInfo InfoFrom(const Data& data, bool isLink)
{
    const bool isDirectory = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    FileInfo info;
    const bool isDevice = (data.dwFileAttributes & FILE_ATTRIBUTE_DEVICE) != 0;
    info.kind = isLink        ? FileKind::Link
                : isDirectory ? FileKind::Directory
                : isDevice    ? FileKind::Other
                              : FileKind::File;
    if (info.kind == FileKind::File) {
        info.size = static_cast<std::uint64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
    }
    info.modified = TimeOf(data.ftLastWriteTime);
    // The system has a time of change too, but tells it of an open file only, and this is asked of thousands.
    info.replaced = TimeOf(data.ftCreationTime);
    return info;
}

// Other reparse points (files kept in a cloud, deduplicated ones) behave as the files that they stand for.
bool IsLink(const WIN32_FIND_DATAW& data)
{
    return (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(data.dwReserved0);
}

FileInfo NothingUnlessFailed(std::error_code& error)
{
    error = LastWindowsError();
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
        error.clear();
    }
    return {};
}

// The path of an open file, without links and without the extended form's beginning; empty when the system knows none.
std::wstring FinalName(HANDLE handle)
{
    std::wstring text;
    // The first answer counts the closing NUL, the second does not. The file may be renamed between the two, so the
    // room is asked for again until it is enough.
    DWORD length = ::GetFinalPathNameByHandleW(handle, nullptr, 0, FILE_NAME_NORMALIZED);
    while (length > text.size()) {
        text.resize(length);
        length = ::GetFinalPathNameByHandleW(handle, text.data(), length, FILE_NAME_NORMALIZED);
    }
    text.resize(length);
    if (text.starts_with(L"\\\\?\\UNC\\")) {
        return L"\\" + text.substr(7);
    }
    return text.starts_with(L"\\\\?\\") ? text.substr(4) : text;
}

// Removes all that can be; the error is the first one.
void RemoveEach(const fs::path& path, std::error_code& error)
{
    // A link to a folder is none here: it goes alone, and what it leads to stays.
    const bool isFolder = InspectPath(path, error).kind == FileKind::Directory;
    const auto note = [&error](const std::error_code& failure) { error = error ? error : failure; };
    const auto remove = [&note](const fs::path& one) {
        std::error_code failure;
        RemoveOne(one, failure);
        note(failure);
    };
    TreeVisitor visitor;
    visitor.visit = [&](const fs::path& one, FileKind kind) {
        if (kind != FileKind::Directory) {
            remove(one);
        }
        return WalkNext::GoOn;
    };
    visitor.leave = remove;
    visitor.fail = [&](const fs::path&, const std::error_code& failure) {
        note(failure);
        return WalkNext::GoOn;
    };
    if (isFolder) {
        WalkTree(path, visitor);
    }
    remove(path);
}

bool IsDotOrDotDot(std::wstring_view name)
{
    return name == L"." || name == L"..";
}

} // namespace

FileInfo InspectPath(const fs::path& path, std::error_code& error)
{
    error.clear();
    if (!IsUsablePath(path)) {
        return {};
    }
    const fs::path system = ToSystemPath(path);
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!::GetFileAttributesExW(system.c_str(), GetFileExInfoStandard, &data)) {
        return NothingUnlessFailed(error);
    }
    WIN32_FIND_DATAW found{};
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) { // only a search tells which kind
        // Where it finds nothing any more, the tag stays 0 and the thing is taken for what its attributes say.
        const HANDLE search = ::FindFirstFileW(system.c_str(), &found);
        if (search != INVALID_HANDLE_VALUE) {
            ::FindClose(search);
        }
    }
    return InfoFrom(data, IsLink(found));
}

FileInfo InspectTarget(const fs::path& path, std::error_code& error)
{
    const FileInfo info = InspectPath(path, error);
    if (info.kind != FileKind::Link) {
        return info;
    }
    // Without FILE_FLAG_OPEN_REPARSE_POINT the system follows the link.
    const FileHandle handle = OpenToAsk(path);
    BY_HANDLE_FILE_INFORMATION data{};
    if (!handle || !::GetFileInformationByHandle(handle.get(), &data)) {
        return NothingUnlessFailed(error);
    }
    return InfoFrom(data, false);
}

// The temporary folder is a user's own, and other folders hand their rights down.
bool MakeDirectory(const fs::path& path, std::error_code& error, FolderAccess)
{
    error = std::make_error_code(std::errc::invalid_argument);
    if (!IsUsablePath(path)) {
        return false;
    }
    error.clear();
    if (::CreateDirectoryW(ToSystemPath(path).c_str(), nullptr)) {
        return true;
    }
    error = LastWindowsError();
    std::error_code ignored;
    if (InspectTarget(path, ignored).kind == FileKind::Directory) {
        error.clear();
    }
    return false;
}

bool RemoveOne(const fs::path& path, std::error_code& error)
{
    error.clear();
    if (!IsUsablePath(path)) {
        return false;
    }
    const fs::path system = ToSystemPath(path);
    const DWORD attributes = ::GetFileAttributesW(system.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        NothingUnlessFailed(error);
        return false;
    }
    // A link to a folder has this attribute, too, and is removed as a folder is, without what it leads to.
    const auto erase = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? &::RemoveDirectoryW : &::DeleteFileW;
    if (erase(system.c_str())) {
        return true;
    }
    error = LastWindowsError();
    // Elsewhere the folder's rights decide, not the file's own.
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0 &&
        ::SetFileAttributesW(system.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY))) {
        error = erase(system.c_str()) ? std::error_code() : LastWindowsError();
    }
    return !error;
}

void RemoveTree(const fs::path& path, std::error_code& error) noexcept
{
    try {
        RemoveEach(path, error);
    } catch (const std::bad_alloc&) {
        error = std::make_error_code(std::errc::not_enough_memory);
    }
}

fs::path RealPath(const fs::path& path, std::error_code& error)
{
    error.clear();
    const FileHandle handle = OpenToAsk(path);
    if (!handle) {
        error = LastWindowsError();
        return {};
    }
    std::wstring name = FinalName(handle.get());
    if (!name.empty()) {
        return name;
    }
    error = LastWindowsError();
    const fs::path parent = path.parent_path();
    std::error_code failure;
    // Wine names no file whose path is long; what is no link lies where its path says.
    if (parent == path || path.filename().empty() || InspectPath(path, failure).kind == FileKind::Link || failure) {
        return {};
    }
    const fs::path folder = RealPath(parent, error);
    return error ? fs::path() : folder / path.filename();
}

bool IsSameFile(const fs::path& a, const fs::path& b) noexcept
{
    try {
        const FileHandle handles[] = {OpenToAsk(a), OpenToAsk(b)};
        BY_HANDLE_FILE_INFORMATION data[2]{};
        for (int i = 0; i < 2; ++i) {
            if (!handles[i] || !::GetFileInformationByHandle(handles[i].get(), &data[i])) {
                return false;
            }
        }
        return data[0].dwVolumeSerialNumber == data[1].dwVolumeSerialNumber &&
               data[0].nFileIndexHigh == data[1].nFileIndexHigh && data[0].nFileIndexLow == data[1].nFileIndexLow;
    } catch (...) {
        return false;
    }
}

void ReadDirectory(const fs::path& directory, const DirectoryVisitor& visit, std::error_code& error)
{
    error.clear();
    WIN32_FIND_DATAW data{};
    // Short names (8.3) are not asked for, and many entries come in one answer of the system: both are for folders on a
    // network.
    const HANDLE handle = ::FindFirstFileExW(ToSystemPath(directory / L"*").c_str(), FindExInfoBasic, &data,
                                             FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (handle == INVALID_HANDLE_VALUE) {
        error = LastWindowsError();
        std::error_code ignored;
        const FileKind kind = InspectTarget(directory, ignored).kind;
        if (kind == FileKind::Directory && error == std::errc::no_such_file_or_directory) {
            error.clear(); // the root of an empty disk
        } else if (kind == FileKind::File || kind == FileKind::Other) {
            error = std::make_error_code(std::errc::not_a_directory);
        }
        return;
    }
    const auto close = [](HANDLE search) { ::FindClose(search); };
    const std::unique_ptr<std::remove_pointer_t<HANDLE>, decltype(close)> search(handle, close);
    do {
        const std::wstring_view name(data.cFileName);
        if (!IsDotOrDotDot(name) && !visit(directory / name, InfoFrom(data, IsLink(data)).kind)) {
            return;
        }
    } while (::FindNextFileW(handle, &data));
    if (::GetLastError() != ERROR_NO_MORE_FILES) {
        error = LastWindowsError();
    }
}

bool MakeHardLink(const fs::path& from, const fs::path& to, std::error_code& error)
{
    error.clear();
    if (!::CreateHardLinkW(ToSystemPath(to).c_str(), ToSystemPath(from).c_str(), nullptr)) {
        error = LastWindowsError();
    }
    return !error;
}

// A folder's rights, which files inherit, decide here, not their owners.
bool IsOwn(const fs::path& path) noexcept
{
    return ::GetFileAttributesW(ToSystemPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

} // namespace orvcore
