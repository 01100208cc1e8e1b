#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>
#include <orvtarsksupport/shared/Machine.h>

namespace orvcapsule::detail {

/// Where the suite's broker is installed.
struct BrokerLocation {
    /// How the search ended.
    enum class Status : int {
        Found = 0,
        BadRegistryValue = 6, ///< the registry's value is there and readable, but holds no path: see `RegistryText`
        NotFound = 7          ///< no file is at any place, the key or value is missing or unreadable, or the path read
                              ///< is not the broker's
    };
    Status status = Status::NotFound;
    orvcore::UTF16String path; ///< empty unless it was found
};

/// Looks for the broker's executable: in the 32-bit common files, in the common files, where the registry says.
/// Starts nothing, and no sender needs it: a host that starts the broker asks.
ORVCAPSULE_API BrokerLocation FindBroker(const orvtarsksupport::Machine& machine);

} // namespace orvcapsule::detail
