#pragma once

#include <system_error>

namespace orvcore::detail {

/// The error that the system's last call left for this thread, as the portable error of the same meaning where there
/// is one: so that errors compare and read the same on every system. Windows only.
std::error_code LastWindowsError();

} // namespace orvcore::detail
