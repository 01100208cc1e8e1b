#pragma once

#include <orvcore/text/Strings.h>

#include <string>

namespace orvcore {

/// What the host tells the platform about itself. Every value has a default that works without a host.
/// All members are static and thread-safe; values are read afresh at each call.
class ORVPLATFORM_API Application {
public:
    /// The host's UI locale, a narrow name such as "en_US" (the default).
    static std::string GetLanguage();
    /// The same as UTF-16, the form in which locale maps are keyed.
    static UTF16String GetLanguageUTF16();
    /// Sets the UI locale; an empty name is stored as it is.
    static void SetLanguage(const std::string& language);

    /// The host application's name, used as a folder name. Default "orvcapsule".
    static std::string GetName();
    static void SetName(const std::string& name);

    /// The host application's version, used as a folder name. Default "0.1.0".
    static std::string GetClientVersion();
    static void SetClientVersion(const std::string& version);
};

} // namespace orvcore
