#pragma once

#include <string>

namespace zelt {

/// The language that localised texts and parts are shown in: `option` where one is given, else ZELT_LANGUAGE, else the
/// system's, which is the first of LC_ALL, LC_MESSAGES and LANG that is set, in the form that packages use. "en_US"
/// where none of them names a language.
std::string ChosenLanguage(const std::string& option);

} // namespace zelt
