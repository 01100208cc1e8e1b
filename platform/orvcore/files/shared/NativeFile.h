#pragma once

#include <orvcore/Export.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <system_error>

namespace orvcore::detail {

/// One open file of the system, read and written at given offsets. Others may read, write, rename or delete it
/// meanwhile on every system. Movable; closed on destruction. Reading through one object from several threads is
/// safe. Failures are put into the `error` of a call, which is otherwise cleared.
class ORVPLATFORM_API NativeFile {
public:
    enum class Mode {
        Read,      ///< must exist
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
    static constexpr std::intptr_t kNoHandle = -1;
    std::intptr_t handle_ = kNoHandle;
};

} // namespace orvcore::detail
