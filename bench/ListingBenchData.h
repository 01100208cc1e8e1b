#pragma once

#include <orvcore/text/Strings.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace bench {

/// The contents of made-up packages, in bytes unpacked.
struct PackageShape {
    const char* name;
    std::size_t packages;
    std::size_t controls; ///< of the definition; each about a kilobyte, in ten languages
    std::size_t still;
    std::size_t video;
    std::size_t project;
};

/// A definition document with so many controls.
orvcore::UTF8String MakeDefinition(std::size_t controls);

/// Fills `folder` with packages in sub-folders of a hundred. Their content is the same; their names differ.
void MakePackages(const std::filesystem::path& folder, const PackageShape& shape);

/// Bytes of memory that the process holds, and that it held at most since the last call; 0 where the system does not
/// tell.
struct Memory {
    std::uint64_t now = 0;
    std::uint64_t peak = 0;
};
Memory MeasureMemory();

} // namespace bench
