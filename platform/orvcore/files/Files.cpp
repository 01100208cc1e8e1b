#include <orvcore/files/Files.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileError.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/files/shared/NativeFile.h>
#include <orvcore/text/Guid.h>

#include <algorithm>
#include <system_error>

namespace orvcore {

namespace fs = std::filesystem;

namespace {

FileKind KindOf(const fs::path& path) noexcept
{
    try {
        std::error_code error;
        return InspectTarget(path, error).kind;
    } catch (...) {
        return FileKind::Nothing;
    }
}

void Throw(const char* what, const fs::path& path, const std::error_code& error)
{
    throw fs::filesystem_error(what, path, error);
}

bool CopyContent(const fs::path& from, AtomicFile& to, std::error_code& error)
{
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    if (KindOf(from) == FileKind::Other) {
        error = FileError::NotARegularFile; // opening a pipe would wait for its other end
        return false;
    }
    const auto file = detail::NativeFile::Open(from, detail::NativeFile::Mode::Read, error);
    std::vector<char> piece(error ? 0 : kPiece);
    std::size_t got = piece.size();
    while (!error && got == piece.size()) {
        got = file.ReadAt(to.Position(), piece.data(), piece.size(), error);
        if (!error) {
            to.Write(piece.data(), got, error);
        }
    }
    return !error;
}

} // namespace

bool Exists(const fs::path& path) noexcept
{
    return KindOf(path) != FileKind::Nothing;
}

bool IsFile(const fs::path& path) noexcept
{
    return KindOf(path) == FileKind::File;
}

bool IsDirectory(const fs::path& path) noexcept
{
    return KindOf(path) == FileKind::Directory;
}

void EnsureDirectory(const fs::path& directory)
{
    std::error_code error = std::make_error_code(std::errc::invalid_argument);
    if (IsUsablePath(directory)) {
        MakeDirectories(directory, error);
    }
    if (error) {
        Throw("cannot create folder", directory, error);
    }
}

fs::path CreatePrivateDirectory(std::u8string_view area)
{
    fs::path directory = TempDirectory() / PathFromUTF8(area);
    std::error_code error;
    MakeDirectory(directory, error, FolderAccess::Shared);
    if (!error) {
        directory /= Guid::Create().ToString();
        if (!MakeDirectory(directory, error, FolderAccess::OwnerOnly) && !error) {
            error = std::make_error_code(std::errc::file_exists);
        }
    }
    if (error) {
        Throw("cannot create folder", directory, error);
    }
    return directory;
}

bool RemoveTree(const fs::path& path) noexcept
{
    try {
        std::error_code error;
        RemoveAll(path, error);
        return !error;
    } catch (...) {
        return false;
    }
}

void CopyOneFile(const fs::path& from, const fs::path& to, Durability durability)
{
    std::error_code error;
    AtomicFile copy(to);
    copy.TakeRightsOf(from);
    if (!CopyContent(from, copy, error) || !copy.Commit(durability, error)) {
        throw fs::filesystem_error("cannot copy file", from, to, error);
    }
}

std::optional<std::string> ReadWholeFile(const fs::path& path, std::uint64_t maxBytes)
{
    std::error_code error;
    const auto file = detail::NativeFile::Open(path, detail::NativeFile::Mode::Read, error);
    const std::uint64_t size = error ? 0 : file.Size(error);
    if (error || size > maxBytes) {
        return std::nullopt;
    }
    std::string content(static_cast<std::size_t>(size), '\0');
    content.resize(file.ReadAt(0, content.data(), content.size(), error));
    return error ? std::nullopt : std::optional(std::move(content));
}

ResultCode WriteBufferToFile(const fs::path& path, const void* data, std::size_t size)
{
    std::error_code error;
    auto file = detail::NativeFile::Open(path, detail::NativeFile::Mode::Truncate, error);
    if (error) {
        return kResultFileNotOpened;
    }
    bool written = file.WriteAt(0, data, size, error);
    written = file.Close(error) && written;
    if (!written && IsFile(path)) {
        RemoveTree(path);
    }
    return written ? kResultOK : kResultFileNotWritten;
}

DirectoryListing ListDirectory(const fs::path& directory)
{
    DirectoryListing listing;
    if (!IsUsablePath(directory)) {
        return listing;
    }
    std::error_code error;
    const auto sort = [&listing](const fs::path& path, FileKind kind) {
        if (kind != FileKind::Link || !IsDirectory(path)) {
            (kind == FileKind::Directory ? listing.directories : listing.files).push_back(path);
        }
        return true;
    };
    ReadDirectory(directory, sort, error);
    std::sort(listing.directories.begin(), listing.directories.end());
    std::sort(listing.files.begin(), listing.files.end());
    return listing;
}

bool WalkFiles(const fs::path& directory, const std::function<bool(const fs::path&)>& visit)
{
    const DirectoryListing listing = ListDirectory(directory);
    return std::all_of(listing.directories.begin(), listing.directories.end(),
                       [&](const fs::path& folder) { return WalkFiles(folder, visit); }) &&
           std::all_of(listing.files.begin(), listing.files.end(), visit);
}

} // namespace orvcore
