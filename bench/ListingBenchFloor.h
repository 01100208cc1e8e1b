#pragma once

#include <filesystem>

namespace bench {

/// The least that any listing has to do for each package below `folder`, one after another: open it with the bare zip
/// library, read its definition and parse it with the bare JSON parser. With `previews` not empty, also unpack both
/// previews into files there. Returns the number of packages.
std::size_t ListBare(const std::filesystem::path& folder, const std::filesystem::path& previews);

} // namespace bench
