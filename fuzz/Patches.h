#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

/// A well-formed file with the changes that the input describes, so that most inputs reach what lies behind the file's
/// own checks: two bytes of how many bytes of it are left (65535: all), then for each change three bytes of its place
/// and one of the new value.
inline std::string Patched(std::string file, const std::uint8_t* data, std::size_t size)
{
    if (size < 2 || file.empty()) {
        return file;
    }
    const std::size_t kept = data[0] | std::size_t{data[1]} << 8U;
    if (kept != 0xFFFF && kept < file.size()) {
        file.resize(kept + 1);
    }
    for (std::size_t at = 2; at + 4 <= size; at += 4) {
        const std::size_t place = data[at] | std::size_t{data[at + 1]} << 8U | std::size_t{data[at + 2]} << 16U;
        file[place % file.size()] = static_cast<char>(data[at + 3]);
    }
    return file;
}

} // namespace fuzz
