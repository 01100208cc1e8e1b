#pragma once

#include <orvcore/text/Strings.h>

#include <functional>
#include <optional>
#include <string>

namespace orvtarsksupport {

/// What the registry says of a text value.
struct RegistryText {
    enum class Outcome {
        Text,    ///< `text` is the value
        Missing, ///< the key or the value is not there, may not be read, or there is no registry
        Unusable ///< the value was read and is no text: another type, a cut code unit, nothing before the end
    };
    Outcome outcome = Outcome::Missing;
    orvcore::UTF16String text = {};
};

/// What the search for an installed program asks of the machine.
struct Machine {
    /// The value of an environment variable; nothing when it is not set.
    std::function<std::optional<orvcore::UTF16String>(const std::string& name)> environment;
    /// Whether a file is at the path.
    std::function<bool(const orvcore::UTF16String& path)> isFile;
    /// A text value under the local-machine hive, in the registry's 64-bit view.
    std::function<RegistryText(const orvcore::UTF16String& key, const orvcore::UTF16String& value)> registryText;
};

/// The machine that the process runs on.
ORVPLATFORM_API Machine ThisMachine();

} // namespace orvtarsksupport
