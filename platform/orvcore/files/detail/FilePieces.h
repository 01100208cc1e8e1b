#pragma once

#include <orvcore/files/shared/NativeFile.h>

#include <functional>

namespace orvcore::detail {

/// Hands the content of a regular file to `take`, piece by piece; its false ends the reading. Memory does not depend on
/// the file's size.
/// @return true when all has been read and taken; otherwise the reason is in `error`, unless `take` ended it
bool ReadPieces(const std::filesystem::path& from, const std::function<bool(const char* data, std::size_t size)>& take,
                std::error_code& error);

} // namespace orvcore::detail
