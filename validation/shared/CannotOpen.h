#pragma once

#include <validation/Finding.h>

#include <system_error>

namespace orvcapsule::detail {

/// A file that the system does not let be read now.
inline Finding CannotOpen(const std::error_code& reason)
{
    return {Severity::Error, "CannotOpen", reason.message()};
}

} // namespace orvcapsule::detail
