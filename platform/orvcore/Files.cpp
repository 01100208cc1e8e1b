#include <orvcore/Files.h>

#include <orvcore/AtomicFile.h>
#include <orvcore/Guid.h>
#include <orvcore/detail/NativeFile.h>

#include <algorithm>
#include <system_error>

namespace orvcore {

namespace fs = std::filesystem;

namespace {

fs::file_status StatusOf(const fs::path& path) noexcept
{
    try {
        std::error_code error;
        return IsUsablePath(path) ? fs::status(ToSystemPath(path), error) : fs::file_status(fs::file_type::none);
    } catch (...) {
        return fs::file_status(fs::file_type::none);
    }
}

} // namespace

bool Exists(const fs::path& path) noexcept
{
    return fs::exists(StatusOf(path));
}

bool IsFile(const fs::path& path) noexcept
{
    return fs::is_regular_file(StatusOf(path));
}

bool IsDirectory(const fs::path& path) noexcept
{
    return fs::is_directory(StatusOf(path));
}

void EnsureDirectory(const fs::path& directory)
{
    if (!IsUsablePath(directory)) {
        throw fs::filesystem_error("cannot create folder", directory,
                                   std::make_error_code(std::errc::invalid_argument));
    }
    fs::create_directories(ToSystemPath(directory));
}

fs::path CreatePrivateDirectory(std::u8string_view area)
{
    fs::path directory = TempDirectory() / PathFromUTF8(area) / Guid::Create().ToString();
    EnsureDirectory(directory);
    return directory;
}

bool RemoveTree(const fs::path& path) noexcept
{
    try {
        std::error_code error;
        fs::remove_all(ToSystemPath(path), error);
        return !error;
    } catch (...) {
        return false;
    }
}

void CopyOneFile(const fs::path& from, const fs::path& to)
{
    const fs::path half = PrivateSibling(to);
    try {
        fs::copy_file(ToSystemPath(from), ToSystemPath(half));
    } catch (...) {
        RemoveTree(half);
        throw;
    }
    std::error_code error;
    if (!RenameOver(half, to, error)) {
        RemoveTree(half);
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
    fs::directory_iterator at(ToSystemPath(directory), error);
    for (; !error && at != fs::directory_iterator(); at.increment(error)) {
        std::error_code ignored;
        const bool isFolder = at->is_directory(ignored);
        if (!isFolder || !at->is_symlink(ignored)) {
            (isFolder ? listing.directories : listing.files).push_back(directory / at->path().filename());
        }
    }
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
