#pragma once

#include <orvcore/Export.h>

#include <filesystem>
#include <string_view>

namespace orvcore {

/// @name What the names of a path tell
/// The file system is not asked.
/// @{

/// True when `path` is `folder` or lies below it. Both are normal, and absolute or relative to the same folder.
ORVPLATFORM_API bool IsWithin(const std::filesystem::path& path, const std::filesystem::path& folder);

/// True when Windows takes `name`, one component of a path in UTF-8, for a device, whatever its folder: "nul",
/// "NUL.txt" and "com1 .txt" are.
ORVPLATFORM_API bool IsDeviceName(std::u8string_view name);
/// @}

} // namespace orvcore
