#pragma once

#include <orvcore/Export.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

namespace orvcore::detail {

/// What tells one file, and one state of its content, from another. The system may give the number of a file that is
/// gone to a new one; of one that is open it does not.
struct FileVersion {
    std::uint64_t volume = 0;
    std::uint64_t number = 0;
    std::uint64_t size = 0;
    std::uint64_t modified = 0; // in the system's own count

    bool operator==(const FileVersion&) const = default;
};

/// One open file of the system, read and written at given offsets. Others may read, write, rename or delete it
/// meanwhile on every system. Movable; closed on destruction. Reading through one object from several threads is
/// safe. Failures are put into the `error` of a call, which is otherwise cleared.
class ORVPLATFORM_API NativeFile {
public:
    enum class Mode {
        Read,      ///< must exist and be a regular file; never waits for the other end of a pipe
        CreateNew, ///< must not exist; for writing and reading
        Truncate,  ///< created, or emptied, for writing
    };

    NativeFile() = default;
    NativeFile(NativeFile&& other) noexcept;
    NativeFile& operator=(NativeFile&& other) noexcept;
    NativeFile(const NativeFile&) = delete;
    NativeFile& operator=(const NativeFile&) = delete;
    ~NativeFile();

    static NativeFile Open(const std::filesystem::path& path, Mode mode, std::error_code& error);

    bool IsOpen() const noexcept
    {
        return handle_ != kNoHandle;
    }
    std::uint64_t Size(std::error_code& error) const;
    FileVersion Version(std::error_code& error) const;
    /// Reads up to `size` bytes; fewer only at the end of the file or after an error.
    std::size_t ReadAt(std::uint64_t offset, void* data, std::size_t size, std::error_code& error) const;
    bool WriteAt(std::uint64_t offset, const void* data, std::size_t size, std::error_code& error);
    /// Lets the system begin to write a finished range to the disk; a hint that never fails.
    void StartWriteback(std::uint64_t offset, std::uint64_t size) noexcept;
    /// Returns when the content is on the disk.
    bool FlushToDisk(std::error_code& error);
    /// Gives this file the access rights of the one at `model`, if there is one.
    void CopyPermissions(const std::filesystem::path& model) noexcept;
    bool Close(std::error_code& error);

private:
    // No descriptor of POSIX, and INVALID_HANDLE_VALUE of Windows.
    static constexpr std::intptr_t kNoHandle = -1;
    std::intptr_t handle_ = kNoHandle;
};

/// The version of the file at `path` now; empty when there is none, or none that may be read.
ORVPLATFORM_API std::optional<FileVersion> VersionAt(const std::filesystem::path& path);

} // namespace orvcore::detail
