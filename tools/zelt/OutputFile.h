#pragma once

#include <filesystem>

namespace zelt {

/// Makes sure that a file may take the place of `to`: a folder, a device or a pipe is not replaced. @throws FileError
void NeedReplaceable(const std::filesystem::path& to);

/// Puts the content of a finished file at a path of the user's, whole and safe on the disk. Links are followed, and a
/// file that is replaced leaves its access rights to the new one. @throws FileError, of what is not replaceable too
void PutInPlace(const std::filesystem::path& made, const std::filesystem::path& to);

} // namespace zelt
