#include <orvcore/files/Files.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/detail/FilePieces.h>
#include <orvcore/files/detail/OrThrow.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace orvcore {

namespace fs = std::filesystem;

void CopyOneFile(const fs::path& from, const fs::path& to, Durability durability,
                 const std::function<bool(double)>& progress)
{
    std::error_code error;
    if (!CopyOneFile(from, to, durability, progress, error)) {
        throw fs::filesystem_error("cannot copy file", from, to, error);
    }
}

bool CopyOneFile(const fs::path& from, const fs::path& to, Durability durability,
                 const std::function<bool(double)>& progress, std::error_code& error)
{
    const std::uint64_t total = InspectTarget(from, error).size; // what is wrong with it shows when it is read
    std::uint64_t done = 0;
    // Goes when this returns, with all that was written unless it was committed: a copy that is cancelled, or that
    // finds the disk full, leaves `to` as it was.
    AtomicFile copy(to);
    copy.RemoveLeftBehind();
    copy.TakeRightsOf(from);
    const auto write = [&](const char* data, std::size_t size) {
        done += size;
        // A file that grows meanwhile is copied to its end and told as done from its first size on.
        const double fraction = done < total ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
        if (progress && !progress(fraction)) {
            error = std::make_error_code(std::errc::operation_canceled);
        }
        return !error && copy.Write(data, size, error);
    };
    return detail::ReadPieces(from, write, error) && copy.Commit(durability, error);
}

std::string ReadWholeFile(const fs::path& path, std::uint64_t maxBytes)
{
    return detail::OrThrow("cannot read file", path,
                           [&](std::error_code& error) { return ReadWholeFile(path, maxBytes, error); });
}

std::string ReadWholeFile(const fs::path& path, std::uint64_t maxBytes, std::error_code& error)
{
    const auto file = detail::NativeFile::Open(path, detail::NativeFile::Mode::Read, error);
    const std::uint64_t size = error ? 0 : file.Size(error);
    if (!error && size > maxBytes) {
        error = std::make_error_code(std::errc::file_too_large);
    }
    if (error) {
        return {};
    }
    std::string content(static_cast<std::size_t>(size), '\0');
    // A file that has become shorter gives what there is; one that grows is read to the size it had.
    content.resize(file.ReadAt(0, content.data(), content.size(), error));
    return error ? std::string() : std::move(content);
}

void WriteBufferToFile(const fs::path& path, const void* data, std::size_t size)
{
    detail::OrThrow("cannot write file", path,
                    [&](std::error_code& error) { return WriteBufferToFile(path, data, size, error); });
}

ResultCode WriteBufferToFile(const fs::path& path, const void* data, std::size_t size, std::error_code& error)
{
    // Over the file itself and not beside it: others have it open and must see the new content under the same file.
    auto file = detail::NativeFile::Open(path, detail::NativeFile::Mode::Truncate, error);
    if (error) {
        return kResultFileNotOpened;
    }
    file.WriteAt(0, data, size, error);
    std::error_code closing;
    file.Close(closing);
    error = error ? error : closing;
    if (error && IsFile(path)) { // half of it could be taken for the whole; a device stays
        std::error_code ignored;
        RemoveOne(path, ignored);
    }
    return error ? kResultFileNotWritten : kResultOK;
}

DirectoryListing ListDirectory(const fs::path& directory)
{
    return detail::OrThrow("cannot read folder", directory,
                           [&](std::error_code& error) { return ListDirectory(directory, error); });
}

DirectoryListing ListDirectory(const fs::path& directory, std::error_code& error)
{
    DirectoryListing listing;
    if (!IsUsablePath(directory)) {
        error = std::make_error_code(std::errc::invalid_argument);
        return listing;
    }
    const auto sort = [&listing](const fs::path& path, FileKind kind) {
        // A link to a folder could lead to a folder above: a caller that walks on from these lists must come to an end.
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
