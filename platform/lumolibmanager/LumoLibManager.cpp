#include <lumolibmanager/LumoLibManager.h>

#include <lumolibmanager/FolderLibManager.h>
#include <orvcore/tasks/shared/NoDestructor.h>

#include <mutex>

namespace lumolibmanager {

namespace {

struct Installed {
    std::mutex mutex;
    std::shared_ptr<LumoLibManager> manager;
};

Installed& TheInstalled()
{
    static orvcore::NoDestructor<Installed> installed; // a worker may list while the process exits
    return *installed;
}

} // namespace

LumoLibManager::~LumoLibManager() = default;

void LumoLibManager::ListElements(const std::string& libraryID, const std::string& elementType,
                                  const std::function<bool(const ListedElement&)>& onElement)
{
    std::vector<std::string> elementIDs;
    GetElementIDsForElementType(libraryID, elementType, elementIDs);
    for (const std::string& elementID : elementIDs) {
        ListedElement element;
        element.id = elementID;
        element.primaryPath = GetPrimaryPath(libraryID, elementID);
        if (!element.primaryPath.empty()) {
            element.name = GetElementName(libraryID, elementID);
            element.alternatePath = GetAlternatePath(libraryID, elementID);
            element.imagePath = GetRenditionPath(libraryID, elementID, kMimeType_ImagePNG);
            element.videoPath = GetRenditionPath(libraryID, elementID, kMimeType_VideoMP4);
        }
        if (!onElement(element)) {
            return;
        }
    }
}

std::vector<LeftOut> LumoLibManager::GetLeftOut()
{
    return {};
}

void SetLumoLibManager(std::shared_ptr<LumoLibManager> manager)
{
    Installed& installed = TheInstalled();
    const std::lock_guard lock(installed.mutex);
    installed.manager.swap(manager); // the old one ends after the lock
}

std::shared_ptr<LumoLibManager> GetLumoLibManager()
{
    Installed& installed = TheInstalled();
    const std::lock_guard lock(installed.mutex);
    if (!installed.manager) {
        installed.manager = std::make_shared<FolderLibManager>();
    }
    return installed.manager;
}

} // namespace lumolibmanager
