#pragma once

#include <orvtarsksupport/shared/Machine.h>

namespace orvtarsksupport::detail {

/// `Machine::registryText` of this system.
RegistryText ReadRegistryText(const orvcore::UTF16String& key, const orvcore::UTF16String& value);

} // namespace orvtarsksupport::detail
