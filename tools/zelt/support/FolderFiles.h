#pragma once

#include <filesystem>
#include <vector>

namespace zelt {

/// The files below a folder that packing it would take, in no certain order: `exclude` and half-written files of killed
/// programs are left out.
/// @throws FileError  of a link, of what is neither a file nor a folder, and of a folder that cannot be read
std::vector<std::filesystem::path> FilesToPack(const std::filesystem::path& folder,
                                               const std::filesystem::path& exclude);

} // namespace zelt
