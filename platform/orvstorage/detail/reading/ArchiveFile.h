#pragma once

#include <orvcore/files/shared/NativeFile.h>
#include <orvstorage/ZipFailure.h>

#include <memory>
#include <span>
#include <vector>

namespace orvstorage::detail {

/// An archive's file, open for reading, with its last bytes kept in memory: there lies the directory, which is read
/// first and twice. Reading is safe from several threads.
class ArchiveFile {
public:
    /// Null, with the reason in `failure`, when the file cannot be opened.
    static std::shared_ptr<const ArchiveFile> Open(const std::filesystem::path& path, ZipFailure& failure);

    std::uint64_t Size() const noexcept
    {
        return size_;
    }
    std::uint64_t TailOffset() const noexcept
    {
        return size_ - tailSize_;
    }
    std::span<const unsigned char> Tail() const noexcept
    {
        return {tail_.get(), tailSize_};
    }
    /// Reads up to `size` bytes; fewer only at the end of the file or after an error.
    std::size_t Read(std::uint64_t offset, void* data, std::size_t size, std::error_code& error) const;

private:
    orvcore::detail::NativeFile file_;
    std::uint64_t size_ = 0;
    std::unique_ptr<unsigned char[]> tail_;
    std::size_t tailSize_ = 0;
};

} // namespace orvstorage::detail
