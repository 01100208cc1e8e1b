#pragma once

#include <string>
#include <string_view>

namespace orvcapsule::detail {

/// Whether hosts could have this language: a language of ISO 639 in small letters, "_" and a country of ISO 3166 or a
/// region's number, perhaps a script between them: "de_DE", "zh_Hant_TW", "es_419".
bool IsLocale(std::string_view name) noexcept;

/// The locale that a name of a wrong form is likely to mean; empty when that is not clear.
std::string NearestLocale(std::string_view name);

} // namespace orvcapsule::detail
