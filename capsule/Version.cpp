#include <orvcapsule/Version.h>

namespace orvcapsule {

const char* GetLibraryVersion() noexcept
{
    return ORVCAPSULE_VERSION;
}

} // namespace orvcapsule
