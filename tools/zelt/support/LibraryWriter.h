#pragma once

#include <string>
#include <vector>

namespace zelt {

/// Makes a new library below `root`, which is created when missing, with a copy of each package, its definition and its
/// previews. The library appears whole or not at all.
/// @return the library's identifier
/// @throws FileError, of a package that cannot be read too; Cancelled; std::filesystem::filesystem_error
std::string WriteLibrary(const std::string& root, const std::string& name, const std::vector<std::string>& files);

} // namespace zelt
