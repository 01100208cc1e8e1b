#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>
#include <package/PackageNames.h>

#include <string>

namespace orvcapsule {

/// @name Identifiers of the graphic sources
/// What `IGraphicSource::GetSourceID` answers, and the first element of an entry's source path.
/// @{
extern ORVCAPSULE_API const std::string kLocalSourceID;         ///< local template folders
extern ORVCAPSULE_API const std::string kDefaultLocalSourceID;  ///< within them, the root folder of templates
extern ORVCAPSULE_API const std::string kLumoLibrariesSourceID; ///< the user's cloud libraries
extern ORVCAPSULE_API const std::string kStockSourceID;         ///< the stock content service
extern ORVCAPSULE_API const std::string kAnySourceID;           ///< a host's choice of every source
extern ORVCAPSULE_API const std::string kNoneSourceID;          ///< a host's choice of no source
/// @}

/// Key of the choice of all cloud libraries at once.
extern ORVCAPSULE_API const orvcore::UTF16String kAllLibraries;

/// @name Filter values of the stock source
/// Passed through to the service as the value of its premium flag; they are no words for people.
/// @{
extern ORVCAPSULE_API const orvcore::UTF8String kStockFilterAll;
extern ORVCAPSULE_API const orvcore::UTF8String kStockFilterPremium;
extern ORVCAPSULE_API const orvcore::UTF8String kStockFilterFree;
/// @}

} // namespace orvcapsule
