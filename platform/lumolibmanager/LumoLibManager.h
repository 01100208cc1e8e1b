#pragma once

#include <orvcore/files/FileSystem.h>
#include <orvcore/text/Strings.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumolibmanager {

/// The type of elements that are templates.
inline constexpr char kElementType_Capsule[] = "capsule";
/// @name Types of the files that show an element
/// @{
inline constexpr char kMimeType_ImagePNG[] = "image/png";
inline constexpr char kMimeType_VideoMP4[] = "video/mp4";
/// @}

/// What a manager did not list, and why.
struct LeftOut {
    orvcore::UTF8String place; ///< full path of the library's folder, or of the root; empty where there is none
    std::string libraryID;     ///< empty: several libraries, or one that cannot even be told by its identifier
    std::string elementID;     ///< empty: the whole library, or elements that `reason` tells of otherwise
    std::string role;          ///< the file of the element that is left out; empty: the whole element
    std::string reason;        ///< what is wrong, one line of English for a person
};

/// What a listing wants to know of an element; what there is not is empty.
struct ListedElement {
    std::string id;
    std::string name;
    std::string primaryPath;
    std::string alternatePath;
    std::string imagePath; ///< of the rendition `kMimeType_ImagePNG`
    std::string videoPath; ///< of the rendition `kMimeType_VideoMP4`
    /// @name What the system told of two of the files
    /// For a manager that has just looked at them, so that the listing need not ask once more; with another kind than
    /// `FileKind::File` it asks.
    /// @{
    orvcore::FileInfo primaryInfo{};
    orvcore::FileInfo alternateInfo{};
    /// @}
};

/// The user's cloud libraries as the suite's synchronisation keeps them on disk. A library holds elements; an element
/// has a type, a primary file, perhaps an alternate one (of a template: its definition document) and renditions that
/// show it. Identifiers, names and paths are narrow strings in UTF-8.
///
/// The library calls it from any thread, from several at a time. It never throws: what is not there is an empty text or
/// an empty list. What it answers may change from call to call, as synchronisation goes on; a listing asks for the
/// libraries first, then for the elements of each with their names and paths (`ListElements`).
class ORVPLATFORM_API LumoLibManager {
public:
    LumoLibManager() = default;
    LumoLibManager(const LumoLibManager&) = delete;
    LumoLibManager& operator=(const LumoLibManager&) = delete;
    virtual ~LumoLibManager();

    /// Starts the manager, which may be running already.
    virtual void Initialize() = 0;
    /// Stops it; it may be started again.
    virtual void Terminate() = 0;
    /// @param libraryIDs  receives all libraries of the signed-in user, in the order of listings; what it held is
    ///        replaced
    virtual void GetLibraryList(std::vector<std::string>& libraryIDs) = 0;
    /// The display name. Several libraries may have the same.
    virtual std::string GetLibraryNameFromLibraryID(const std::string& libraryID) = 0;
    /// @param elementIDs  receives the elements of one type, in the order of listings; what it held is replaced
    virtual void GetElementIDsForElementType(const std::string& libraryID, const std::string& elementType,
                                             std::vector<std::string>& elementIDs) = 0;
    /// The display name.
    virtual std::string GetElementName(const std::string& libraryID, const std::string& elementID) = 0;

    /// @name Full paths of an element's files
    /// @{
    virtual std::string GetPrimaryPath(const std::string& libraryID, const std::string& elementID) = 0;
    virtual std::string GetAlternatePath(const std::string& libraryID, const std::string& elementID) = 0;
    virtual std::string GetRenditionPath(const std::string& libraryID, const std::string& elementID,
                                         const std::string& mimeType) = 0;
    /// @}

    /// Tells of the elements of one type, in the order of listings; for a manager that can tell of the first ones
    /// before it has looked at all. By default asks the operations above, one after the other.
    /// @param onElement  called on this thread; false ends the listing. It passes over an element without a primary
    ///        path, which may be left out here.
    virtual void ListElements(const std::string& libraryID, const std::string& elementType,
                              const std::function<bool(const ListedElement& element)>& onElement);

    /// What the latest listing of the libraries, and of each library's elements, left out. Nothing by default.
    virtual std::vector<LeftOut> GetLeftOut();
};

/// Installs the host's manager, which is shared: a listing that is running keeps the one it asks now until the next
/// call. Null installs the manager that is there at first: a `FolderLibManager` whose root the setting
/// "ORV.libraryfolder" names. Neither `Initialize` nor `Terminate` is called for it. Any thread.
ORVPLATFORM_API void SetLumoLibManager(std::shared_ptr<LumoLibManager> manager);
/// The manager that is installed; never null. Any thread.
ORVPLATFORM_API std::shared_ptr<LumoLibManager> GetLumoLibManager();

} // namespace lumolibmanager
