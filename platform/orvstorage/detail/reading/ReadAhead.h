#pragma once

#include <orvstorage/detail/reading/ArchiveFile.h>

namespace orvstorage::detail {

/// Reads an archive's file for one zip handle, which asks for many small pieces in a row: a first small read takes
/// little more than was asked, a run of them takes larger pieces.
class ReadAhead {
public:
    explicit ReadAhead(std::shared_ptr<const ArchiveFile> file)
        : file_(std::move(file))
    {
    }

    const ArchiveFile& File() const
    {
        return *file_;
    }
    std::size_t Read(std::uint64_t offset, void* data, std::size_t size, std::error_code& error);

private:
    bool Fill(std::uint64_t offset, std::error_code& error);

    std::shared_ptr<const ArchiveFile> file_;
    std::unique_ptr<unsigned char[]> buffer_;
    std::size_t capacity_ = 0;
    std::size_t filled_ = 0;
    std::uint64_t start_ = 0;
};

} // namespace orvstorage::detail
