#pragma once

#include <orvcore/host/Application.h>

#include <map>
#include <string_view>

namespace orvcapsule::detail {

inline constexpr std::u16string_view kFallbackLocale = u"en_US";

/// The application language as a key of a per-locale map.
inline orvcore::UTF16String CurrentLocale()
{
    return orvcore::Application::GetLanguageUTF16();
}

/// The entry for the application language; else the one for `fallback`, unless that is empty; else the first entry
/// in key order; else the end of the map.
template <class T>
auto FindForLanguage(const std::map<orvcore::UTF16String, T>& map, std::u16string_view fallback)
{
    auto found = map.find(CurrentLocale());
    if (found == map.end() && !fallback.empty()) {
        found = map.find(orvcore::UTF16String(fallback));
    }
    // The first in key order, so that every host falls back to the same one.
    return found != map.end() ? found : map.begin();
}

} // namespace orvcapsule::detail
