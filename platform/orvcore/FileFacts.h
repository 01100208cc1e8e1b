#pragma once

#include <orvcore/Paths.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace orvcore {

/// A moment of the system clock (UTC) as a file system stores it; every system's file times fit.
using FileTime = std::chrono::sys_time<std::chrono::microseconds>;

/// What a listing wants to know of a regular file, found out with one question to the system.
struct FileFacts {
    std::uint64_t size = 0; ///< bytes
    FileTime modified{};    ///< last change of the content, rounded down
};

/// The facts of the regular file to which `path` leads, symbolic links followed. Empty when there is none or the system
/// does not tell. Never blocks on a pipe or device that has the name of a file. Thread-safe.
ORVPLATFORM_API std::optional<FileFacts> GetFileFacts(const std::filesystem::path& path);

/// True when what stands at `path` leads elsewhere: a symbolic link, on Windows a junction or mount point too. A walk
/// that follows none of them always ends.
ORVPLATFORM_API bool IsLink(const std::filesystem::directory_entry& entry);

} // namespace orvcore
