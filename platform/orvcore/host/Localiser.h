#pragma once

#include <orvcore/text/Strings.h>

#include <initializer_list>
#include <string>
#include <string_view>

namespace orvcore {

/// Turns localisation keys into texts of the application language (`Application::GetLanguage`, read at each call).
///
/// A key reads "$$$/Area/Key=Default English text". Its text is looked up, without the part after the first "=", in the
/// dictionary of the language ("de_DE"), then in that of the bare language ("de"); failing both it is the default text.
/// All members are static and may be called from any thread.
class ORVPLATFORM_API Localiser {
public:
    /// The text for `key`, with "@0" to "@9" replaced by the arguments. An "@" that names no argument given stays as it
    /// is, and arguments are not searched for further ones. A text that does not begin with "$$$/" is its own
    /// translation; a key without "=" that no dictionary holds comes back whole, so that the gap is seen.
    static UTF8String Resolve(std::string_view key, std::initializer_list<std::u8string_view> arguments = {});

    /// Adds the entries of a dictionary to those of `language`, replacing texts of the same key. `dictionary` is UTF-8
    /// text with one "$$$/Area/Key=Text" a line; in a text, "\n" stands for a line break and "\\" for a back-slash.
    /// Lines that are empty or begin with "#" are skipped. Returns the number of lines that are neither these nor
    /// entries, and were ignored.
    static std::size_t LoadDictionary(const std::string& language, std::string_view dictionary);

    /// Forgets the dictionary of `language`.
    static void UnloadDictionary(const std::string& language);
};

} // namespace orvcore
