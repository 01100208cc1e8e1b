#pragma once

#include <orvcore/text/Strings.h>

#include <cstdint>
#include <string>

namespace orvcore {

/// Settings for developers, by name ("ORV.graphicfindinterval"). A value comes from the host when it set one, else from
/// the environment, else it is the default given by the reader. Host programs need none of them.
///
/// The environment variable of a setting is its name in capitals with every character other than a letter or digit
/// replaced by "_": ORV_GRAPHICFINDINTERVAL. Only names that begin with "ORV." are looked up there, each once.
/// All members are static and may be called from any thread.
class ORVPLATFORM_API DebugSettings {
public:
    /// The whole number of that name; `defaultValue` when there is none or its text is not a decimal number.
    static std::int64_t GetInt(const std::string& name, std::int64_t defaultValue);
    /// The text of that name; `defaultValue` when there is none.
    static UTF8String GetText(const std::string& name, const UTF8String& defaultValue);

    static void SetInt(const std::string& name, std::int64_t value);
    static void SetText(const std::string& name, const UTF8String& value);
    /// Forgets the host's value; the environment's counts again.
    static void Unset(const std::string& name);
};

} // namespace orvcore
