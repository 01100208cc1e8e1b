#pragma once

#include <orvcore/files/shared/NativeFile.h>
#include <orvstorage/detail/ZipResult.h>

#include <memory>
#include <span>
#include <vector>

namespace orvstorage::detail {

/// An archive's file, open for reading, with its last bytes kept in memory: there lies the directory, which is read
/// first and twice. Reading is safe from several threads.
///
/// The bytes from TailOffset to Size come from memory, those before from the file. The file may end elsewhere: behind
/// what was replaced it still has its own end, which nobody is shown. Views of the tail (names of
/// DirectoryRecord are such) are taken after Keep, which may move the bytes; ReplaceEnd leaves all before its offset
/// where it is.
class ArchiveFile {
public:
    /// The most bytes of an end record with those of zip64, without its comment.
    static constexpr std::size_t kLongestEnd = 56 + 20 + 22;

    static ZipResult<std::shared_ptr<ArchiveFile>> Open(const std::filesystem::path& path);

    std::uint64_t Size() const noexcept
    {
        return size_;
    }
    /// The file as it was when it was opened.
    const orvcore::detail::FileVersion& Version() const noexcept
    {
        return version_;
    }
    /// Whether `path` still leads to this file, and it has not been written to.
    bool IsStillAt(const std::filesystem::path& path) const;
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

    /// @name What readers are shown
    /// An end of a file can be read in several ways: bytes before the end record may look like a zip64 locator, bytes
    /// of its comment like another end record. The zip library makes its own choice there. So our reader chooses first,
    /// and the file's end is then replaced, in memory alone, by one that can be read in one way only.
    /// For the one thread that opens the archive.
    /// @{
    /// Takes all from `offset` on into the tail and lends it for changes, which readers see, until the next call of
    /// these two. False when it cannot be read.
    bool Keep(std::uint64_t offset, std::span<unsigned char>& bytes);
    /// Lets the file end with `end` in the place of all from `offset` on, which must be in the tail.
    /// @param end  at most kLongestEnd bytes more than what it replaces
    void ReplaceEnd(std::uint64_t offset, std::span<const unsigned char> end);
    /// @}

private:
    bool ReadTail(std::uint64_t offset, std::error_code& error);

    orvcore::detail::NativeFile file_;
    orvcore::detail::FileVersion version_;
    std::uint64_t size_ = 0;                // as readers are shown it
    std::unique_ptr<unsigned char[]> tail_; // with room for kLongestEnd bytes more
    std::size_t tailSize_ = 0;
};

} // namespace orvstorage::detail
