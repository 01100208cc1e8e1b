#include <orvtarsksupport/detail/Registry.h>

namespace orvtarsksupport::detail {

RegistryText ReadRegistryText(const orvcore::UTF16String& /*key*/, const orvcore::UTF16String& /*value*/)
{
    return {};
}

} // namespace orvtarsksupport::detail
