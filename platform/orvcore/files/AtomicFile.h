#pragma once

#include <orvcore/files/Files.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

namespace orvcore {

namespace detail {
class ConditionalCommit;
class NativeFile;
} // namespace detail

/// A new, private path in the folder of `path`: where a file is made before it takes its place.
ORVPLATFORM_API std::filesystem::path PrivateSibling(const std::filesystem::path& path);
/// True for the file names that PrivateSibling makes; such a file may be deleted when its program was killed.
ORVPLATFORM_API bool IsPrivateName(const std::filesystem::path& fileName);

/// Removes the files and folders with such names in `folder` that last changed more than `age` ago: a younger one may
/// still be in the making. Those of other users stay. Reads the folder, not those below it; what cannot be removed
/// stays.
ORVPLATFORM_API void RemoveLeftBehind(const std::filesystem::path& folder, std::chrono::hours age) noexcept;

/// Checks that a file may take the place of `path`: nothing stands there, or a file does, itself or behind a link. A
/// folder, a device, a pipe or a socket is not replaced; nor is a link that leads nowhere, whose file may be on a disk
/// that is not connected. Where a file may not, it throws `std::filesystem::filesystem_error`, or puts the
/// reason into `error`, which is otherwise cleared.
ORVPLATFORM_API void CheckReplaceable(const std::filesystem::path& path);
/// @return whether it may
ORVPLATFORM_API bool CheckReplaceable(const std::filesystem::path& path, std::error_code& error);

/// Writes a file that appears at its path whole or not at all. Content goes to a private file in the same folder,
/// which Commit puts in place; without Commit the destructor removes it and whatever stood at the path stays as it
/// was. A symbolic link at the path is followed, and the access rights of a file that is replaced stay. Used by one
/// thread at a time.
class ORVPLATFORM_API AtomicFile {
public:
    /// Nothing is created before the first write or Commit.
    explicit AtomicFile(const std::filesystem::path& path);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    /// Removes what killed programs left in the folder of the path more than a day ago.
    void RemoveLeftBehind() const noexcept;

    /// A file that is new at the path gets the access rights of the one at `model`. To be said before the first write.
    void TakeRightsOf(const std::filesystem::path& model)
    {
        rightsOf_ = model;
    }

    /// Writes at the current position and moves it on. Small writes are gathered.
    bool Write(const void* data, std::size_t size, std::error_code& error);
    /// Moves the position; a write there replaces what was written before.
    void Seek(std::uint64_t offset) noexcept
    {
        position_ = offset;
    }
    std::uint64_t Position() const noexcept
    {
        return position_;
    }
    std::uint64_t Size() const noexcept
    {
        return size_;
    }

    using Durability = orvcore::Durability;
    /// Puts the file in place. With an error nothing has changed at the path.
    [[nodiscard]] bool Commit(Durability durability, std::error_code& error);
    /// Gives the content up.
    void Rollback() noexcept;

private:
    friend class detail::ConditionalCommit;

    std::filesystem::path Folder() const;
    bool Open(std::error_code& error);
    bool FlushBuffer(std::error_code& error);
    bool Complete(Durability durability, std::error_code& error);
    bool PutInPlace(std::error_code& error);

    std::filesystem::path target_;
    std::filesystem::path private_;
    std::filesystem::path rightsOf_;
    std::unique_ptr<detail::NativeFile> file_;
    std::vector<char> buffer_; // bytes of [bufferStart_, bufferStart_ + buffer_.size()), not yet written
    std::uint64_t bufferStart_ = 0;
    std::uint64_t position_ = 0;
    std::uint64_t size_ = 0;
    std::uint64_t writtenBack_ = 0;
};

} // namespace orvcore
