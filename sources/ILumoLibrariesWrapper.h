#pragma once

#include <lumolibmanager/LumoLibManager.h>
#include <orvcapsule/Export.h>

#include <functional>
#include <string>
#include <vector>

/// The user's cloud libraries as this library asks for them: each function forwards to one operation of the manager
/// that is installed (`lumolibmanager::GetLumoLibManager`), whose contract and thread rule hold. Identifiers, names and
/// paths are UTF-8; what is not there is an empty text or an empty list.
namespace orvcapsule::ILumoLibrariesWrapper {

/// Starts the library manager.
ORVCAPSULE_API void InitializeLumoLibraries();
/// Stops it.
ORVCAPSULE_API void ClearLumoLibraries();
/// All libraries of the signed-in user. @param libraryIDs  what it held is replaced
ORVCAPSULE_API void GetLibraryList(std::vector<std::string>& libraryIDs);
/// The display name of a library.
ORVCAPSULE_API std::string GetLibraryNameFromLibraryID(const std::string& libraryID);
/// The template elements of a library. @param elementIDs  what it held is replaced
ORVCAPSULE_API void GetCapsuleElementIDs(const std::string& libraryID, std::vector<std::string>& elementIDs);
/// Tells of the template elements of a library, the first ones perhaps before all are known.
/// @param onElement  called on this thread; false ends the listing
ORVCAPSULE_API void ListCapsules(const std::string& libraryID,
                                 const std::function<bool(const lumolibmanager::ListedElement& element)>& onElement);
/// The display name of an element.
ORVCAPSULE_API std::string GetElementName(const std::string& libraryID, const std::string& elementID);

/// @name Full paths of a template element's files
/// @{
/// The package.
ORVCAPSULE_API std::string GetCapsulePath(const std::string& libraryID, const std::string& elementID);
/// The definition document.
ORVCAPSULE_API std::string GetCapsuleSchemaPath(const std::string& libraryID, const std::string& elementID);
/// The preview image, PNG.
ORVCAPSULE_API std::string GetCapsuleThumbnailPath(const std::string& libraryID, const std::string& elementID);
/// The preview video, MP4.
ORVCAPSULE_API std::string GetCapsuleVideoThumbnailPath(const std::string& libraryID, const std::string& elementID);
/// @}

/// Always empty: where libraries lie is the manager's own business.
ORVCAPSULE_API std::string GetLibraryDiskPath();

} // namespace orvcapsule::ILumoLibrariesWrapper
