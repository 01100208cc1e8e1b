#include <capsule/Guid.h>

#include <orvcore/text/Guid.h>

namespace orvcapsule::utils {

orvcore::UTF16String GenerateStringGuid()
{
    return orvcore::ToUTF16(orvcore::Guid::Create().ToString());
}

} // namespace orvcapsule::utils
