#pragma once

#include <string>
#include <string_view>

namespace zelt {

/// Reports a locale that is not of the form that packages and hosts use, `ll`, `ll_CC` or `ll_Script_CC`, and names the
/// one that is likely meant. It is no error: a host may use other names.
/// @param option  what gave it, "--locale"
void WarnOfLocale(std::string_view option, std::string_view locale);

/// The locale of the usual form that another spelling stands for ("de-de.UTF-8": "de_DE"), or one of that form as it
/// is; empty when there is none.
std::string LikelyLocale(std::string_view spelling);

} // namespace zelt
