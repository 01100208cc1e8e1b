#pragma once

#include <string>

namespace orvtools {

/// Asks the system to show an address in the user's web browser. False when there is none, or no screen. Returns
/// without waiting for the browser.
bool OpenInBrowser(const std::string& address);

} // namespace orvtools
