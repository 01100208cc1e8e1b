#include <orvcore/files/shared/NativeFile.h>

#include <orvcore/files/Files.h>

#include <utility>

namespace orvcore::detail {

NativeFile::NativeFile(NativeFile&& other) noexcept
    : handle_(std::exchange(other.handle_, kNoHandle))
{
}

NativeFile& NativeFile::operator=(NativeFile&& other) noexcept
{
    // `other` closes what this one held, when it goes.
    std::swap(handle_, other.handle_);
    return *this;
}

NativeFile::~NativeFile()
{
    std::error_code ignored;
    Close(ignored);
}

std::optional<FileVersion> VersionAt(const std::filesystem::path& path)
{
    std::error_code error;
    // Opening what is no file may have effects of its own: a device, a pipe.
    if (!IsFile(path)) {
        return std::nullopt;
    }
    const NativeFile file = NativeFile::Open(path, NativeFile::Mode::Read, error);
    const FileVersion version = error ? FileVersion() : file.Version(error);
    return error ? std::nullopt : std::optional(version);
}

} // namespace orvcore::detail
