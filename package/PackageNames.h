#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

namespace orvcapsule {

/// @name Well-known names of a template package
/// Entry names are exact: case counts, folders are separated by forward slashes.
/// @{
ORVCAPSULE_API extern const orvcore::UTF8String kCapsuleExtn;        ///< ".zelt", a package's extension
ORVCAPSULE_API extern const orvcore::UTF8String kJSONFileName;       ///< "definition.json", the definition document
ORVCAPSULE_API extern const orvcore::UTF8String kThumbFileName;      ///< "thumb.png", the default poster
ORVCAPSULE_API extern const orvcore::UTF8String kVideoThumbFileName; ///< "thumb.mp4", the default preview video
ORVCAPSULE_API extern const orvcore::UTF8String kTsProjectFileName;  ///< "project.tsgraphic", Tessel's project
ORVCAPSULE_API extern const orvcore::UTF8String kCvProjectFileName;  ///< "project.cvgraphic", Corvid's project
/// @}

} // namespace orvcapsule
