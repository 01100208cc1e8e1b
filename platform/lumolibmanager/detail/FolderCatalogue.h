#pragma once

#include <lumolibmanager/detail/Manifest.h>

#include <orvcore/files/FileSystem.h>

#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace lumolibmanager::detail {

/// One library's folder with its manifest as it was read. Immutable.
struct Library {
    std::filesystem::path folder;
    orvcore::FileInfo state; ///< of the manifest's file, from before it was read
    bool isSettled = false;  ///< the file's times tell its next change
    Manifest manifest;       ///< empty where `error` is not
    std::string error;       ///< why nothing of the manifest can be used

    /// Whether the manifest is still the one that was read.
    bool IsCurrent() const;
};
using LibraryPtr = std::shared_ptr<const Library>;

/// Reads the manifest in `folder`, if it has at most `most` bytes.
LibraryPtr ReadLibrary(const std::filesystem::path& folder, std::uint64_t most);

/// All libraries below a root folder at one moment. Immutable.
struct Catalogue {
    std::vector<LibraryPtr> read;      ///< all folders
    std::vector<LibraryPtr> libraries; ///< the ones that are listed, in the order of their folders' names
    std::unordered_map<std::string, LibraryPtr> byID;
    struct LeftOutFolder {
        std::filesystem::path folder;
        std::string libraryID;
        std::string reason;
    };
    std::vector<LeftOutFolder> leftOut;
};
using CataloguePtr = std::shared_ptr<const Catalogue>;

/// Looks at the folders below `root`. @param before  null, or an earlier look: manifests that have not changed are
/// taken from it
CataloguePtr ReadCatalogue(const std::filesystem::path& root, const CataloguePtr& before);

} // namespace lumolibmanager::detail
