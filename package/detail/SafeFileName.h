#pragma once

#include <filesystem>
#include <string_view>

namespace orvcapsule::detail {

/// A plain file name for any text, the text itself where it already is one on every system; no two texts share a
/// name. Other bytes than UTF-8 are allowed.
std::filesystem::path SafeFileName(std::u8string_view text);

} // namespace orvcapsule::detail
