#pragma once

#include <orvstorage/ZipFile.h>

#include <functional>
#include <string_view>

namespace orvcapsule::detail {

/// True when the archive's last operation failed because it has no such entry. Only what is not there has a substitute:
/// another entry in the place of a damaged one would pass for it.
bool WasMissing(const orvstorage::ZipFile& zip);

/// Extracts the entry of an application in another language: `extract` is called with the name for the application's
/// language ("thumb_de_DE.png") and, when there is no such entry, with the plain one ("thumb.png").
/// @return what `extract` answered last
bool ExtractInLanguage(const orvstorage::ZipFile& zip, std::u8string_view stem, std::u8string_view extension,
                       const std::function<bool(const orvcore::UTF8String& entry)>& extract);

} // namespace orvcapsule::detail
