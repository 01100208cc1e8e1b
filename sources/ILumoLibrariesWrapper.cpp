#include <sources/ILumoLibrariesWrapper.h>

namespace orvcapsule::ILumoLibrariesWrapper {

using lumolibmanager::GetLumoLibManager;

void InitializeLumoLibraries()
{
    GetLumoLibManager()->Initialize();
}

void ClearLumoLibraries()
{
    GetLumoLibManager()->Terminate();
}

void GetLibraryList(std::vector<std::string>& libraryIDs)
{
    GetLumoLibManager()->GetLibraryList(libraryIDs);
}

std::string GetLibraryNameFromLibraryID(const std::string& libraryID)
{
    return GetLumoLibManager()->GetLibraryNameFromLibraryID(libraryID);
}

void GetCapsuleElementIDs(const std::string& libraryID, std::vector<std::string>& elementIDs)
{
    GetLumoLibManager()->GetElementIDsForElementType(libraryID, lumolibmanager::kElementType_Capsule, elementIDs);
}

void ListCapsules(const std::string& libraryID,
                  const std::function<bool(const lumolibmanager::ListedElement&)>& onElement)
{
    GetLumoLibManager()->ListElements(libraryID, lumolibmanager::kElementType_Capsule, onElement);
}

std::string GetElementName(const std::string& libraryID, const std::string& elementID)
{
    return GetLumoLibManager()->GetElementName(libraryID, elementID);
}

std::string GetCapsulePath(const std::string& libraryID, const std::string& elementID)
{
    return GetLumoLibManager()->GetPrimaryPath(libraryID, elementID);
}

std::string GetCapsuleSchemaPath(const std::string& libraryID, const std::string& elementID)
{
    return GetLumoLibManager()->GetAlternatePath(libraryID, elementID);
}

std::string GetCapsuleThumbnailPath(const std::string& libraryID, const std::string& elementID)
{
    return GetLumoLibManager()->GetRenditionPath(libraryID, elementID, lumolibmanager::kMimeType_ImagePNG);
}

std::string GetCapsuleVideoThumbnailPath(const std::string& libraryID, const std::string& elementID)
{
    return GetLumoLibManager()->GetRenditionPath(libraryID, elementID, lumolibmanager::kMimeType_VideoMP4);
}

std::string GetLibraryDiskPath()
{
    return {};
}

} // namespace orvcapsule::ILumoLibrariesWrapper
