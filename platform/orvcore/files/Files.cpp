#include <orvcore/files/Files.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/files/shared/FilePieces.h>

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
    CopyOneFile(from, to, durability, {});
}

void CopyOneFile(const fs::path& from, const fs::path& to, Durability durability,
                 const std::function<bool(double)>& progress)
{
    std::error_code error;
    const std::uint64_t total = InspectTarget(from, error).size; // what is wrong with it shows when it is read
    std::uint64_t done = 0;
    AtomicFile copy(to);
    copy.RemoveLeftBehind();
    copy.TakeRightsOf(from);
    const auto write = [&](const char* data, std::size_t size) {
        done += size;
        const double fraction = done < total ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
        if (progress && !progress(fraction)) {
            error = std::make_error_code(std::errc::operation_canceled);
        }
        return !error && copy.Write(data, size, error);
    };
    if (!detail::ReadPieces(from, write, error) || !copy.Commit(durability, error)) {
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
    std::error_code error;
    DirectoryListing listing = ListDirectory(directory, error);
    if (error) {
        Throw("cannot read folder", directory, error);
    }
    return listing;
}

DirectoryListing ListDirectory(const fs::path& directory, std::error_code& error)
{
    DirectoryListing listing;
    if (!IsUsablePath(directory)) {
        error = std::make_error_code(std::errc::invalid_argument);
        return listing;
    }
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

} // namespace orvcore
