#pragma once

#include <orvcore/FileSystem.h>

#include <optional>

namespace orvcore {

/// What a listing wants to know of a regular file, found out with one question to the system.
struct FileFacts {
    std::uint64_t size = 0; ///< bytes
    FileTime modified{};    ///< last change of the content, rounded down
    FileTime replaced{};    ///< when the system itself last saw a new state or a new file here: programs do not set it

    bool operator==(const FileFacts&) const = default;
};

/// The facts of the regular file to which `path` leads, symbolic links followed. Empty when there is none or the system
/// does not tell. Never blocks on a pipe or device that has the name of a file. Thread-safe.
ORVPLATFORM_API std::optional<FileFacts> GetFileFacts(const std::filesystem::path& path);

} // namespace orvcore
