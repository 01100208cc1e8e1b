#pragma once

#include <orvcore/text/Strings.h>

#include <optional>
#include <string>

namespace orvcore {

/// The value of an environment variable, or nothing when there is none of that name. `name` is plain ASCII; case counts
/// except on Windows. Any thread, as long as none changes the environment meanwhile.
ORVPLATFORM_API std::optional<UTF8String> ReadEnvironment(const std::string& name);

} // namespace orvcore
