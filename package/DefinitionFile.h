#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

namespace orvcapsule {

/// The content of a definition file, byte for byte: nothing is decoded and a byte-order mark stays. Empty when there is
/// no such file, it cannot be read, or it is larger than 64 MiB, eight times what readers of definitions take. May be
/// called from any thread; throws nothing but `std::bad_alloc`.
ORVCAPSULE_API orvcore::UTF8String GetJsonContent(const orvcore::UTF8String& path);

} // namespace orvcapsule
