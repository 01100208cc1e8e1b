#pragma once

#include <lumolibmanager/LumoLibManager.h>

#include <filesystem>
#include <memory>

namespace lumolibmanager {

/// @name A library's manifest
/// The file of each library's folder that tells what is in it, and its keys; docs/cloud-libraries.md describes it.
/// @{
inline constexpr char8_t kManifestName[] = u8"library.json";
inline constexpr char kManifestVersionKey[] = "formatVersion";
inline constexpr char kManifestIDKey[] = "id";
inline constexpr char kManifestNameKey[] = "name";
inline constexpr char kManifestElementsKey[] = "elements";
inline constexpr char kManifestTypeKey[] = "type";
inline constexpr char kManifestFilesKey[] = "files";
inline constexpr char kManifestPrimaryRole[] = "primary";
inline constexpr char kManifestAlternateRole[] = "alternate";
inline constexpr int kManifestVersion = 1;
/// @}

/// @name Limits
/// @{
inline constexpr std::size_t kMaxLibraries = 1000;       ///< folders below a root that are looked at
inline constexpr std::size_t kMaxElements = 20'000;      ///< elements of one library
inline constexpr std::size_t kMaxFiles = 32;             ///< files of one element
inline constexpr std::size_t kMaxTextSize = 1024;        ///< bytes of an identifier, a name, a type, a role or a path
inline constexpr std::size_t kMaxManifests = 64U << 20U; ///< bytes of all manifests together
/// @}

/// Libraries that lie synchronised on disk: each folder directly below a root folder that holds a manifest
/// ("library.json") is one. Libraries come in the order of their folders' names, elements in that of the manifest.
///
/// A manifest is hostile until checked. One that is damaged costs its library, an element that is damaged, names a file
/// outside the library's folder (a link anywhere on the way counts as outside) or has no primary file yet costs that
/// element, another file that is not there yet costs that file; `GetLeftOut` tells. Of two libraries or elements with
/// one identifier the first counts.
///
/// `GetLibraryList` looks at the disk again, and `GetElementIDsForElementType` and `ListElements` at the files of that
/// library, so a listing sees every change; a manifest is read again only when it has changed. Its elements are read as
/// they are listed: the first ones come nearly as soon from a library of many as from one of few. `GetLeftOut` never
/// looks at the disk; the other calls answer from the latest look and take the disk only where there was none. Nothing
/// is kept beyond `Terminate`; `Initialize` need not be called. Any thread.
class ORVPLATFORM_API FolderLibManager final : public LumoLibManager {
public:
    /// Takes the root folder, at each look, from the setting "ORV.libraryfolder" (the environment's
    /// ORV_LIBRARYFOLDER); no libraries without one.
    FolderLibManager();
    /// @param root  the root folder; links on the way to it are followed
    explicit FolderLibManager(const std::filesystem::path& root);
    ~FolderLibManager() override;

    void Initialize() override;
    void Terminate() override;
    void GetLibraryList(std::vector<std::string>& libraryIDs) override;
    std::string GetLibraryNameFromLibraryID(const std::string& libraryID) override;
    void GetElementIDsForElementType(const std::string& libraryID, const std::string& elementType,
                                     std::vector<std::string>& elementIDs) override;
    std::string GetElementName(const std::string& libraryID, const std::string& elementID) override;
    std::string GetPrimaryPath(const std::string& libraryID, const std::string& elementID) override;
    std::string GetAlternatePath(const std::string& libraryID, const std::string& elementID) override;
    std::string GetRenditionPath(const std::string& libraryID, const std::string& elementID,
                                 const std::string& mimeType) override;
    void ListElements(const std::string& libraryID, const std::string& elementType,
                      const std::function<bool(const ListedElement& element)>& onElement) override;
    std::vector<LeftOut> GetLeftOut() override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace lumolibmanager
