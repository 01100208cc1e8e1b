#include <lumolibmanager/FolderLibManager.h>

#include <lumolibmanager/detail/FolderCatalogue.h>
#include <lumolibmanager/detail/LibraryFiles.h>

#include <orvcore/host/DebugSettings.h>

#include <algorithm>
#include <mutex>
#include <optional>

// What is known of the disk is immutable and shared: a catalogue (all libraries with their manifests) and, for each
// library that was asked for, a look at its files. A call takes what it needs under the lock and works with that, so a
// library may be read anew, or the manager terminated, while another thread still answers from the older one. A look
// belongs to the very manifest that it was made with (Looked holds both): indexes of files mean nothing in another one.

namespace lumolibmanager {

namespace {

namespace fs = std::filesystem;
using namespace detail;

using FilesPtr = std::shared_ptr<const LibraryFiles>;

// Full path of a file of the element at `at`; empty when that has no such file.
std::string PathAt(const Library& library, const LibraryFiles& files, std::size_t at, const std::string& role)
{
    const auto& all = library.manifest.elements[at].files;
    const auto file = std::find_if(all.begin(), all.end(), [&](const ManifestFile& each) { return each.role == role; });
    if (file == all.end() || !files.Has(at, static_cast<std::size_t>(file - all.begin()))) {
        return {};
    }
    fs::path path = library.folder / orvcore::PathFromUTF8(orvcore::AsUTF8(file->path));
    return orvcore::ToNarrow(orvcore::PathToUTF8(path.make_preferred()));
}

ListedElement ElementAt(const Library& library, const LibraryFiles& files, std::size_t at)
{
    const ManifestElement& element = library.manifest.elements[at];
    return {element.id,
            element.name,
            PathAt(library, files, at, kManifestPrimaryRole),
            PathAt(library, files, at, kManifestAlternateRole),
            PathAt(library, files, at, kMimeType_ImagePNG),
            PathAt(library, files, at, kMimeType_VideoMP4)};
}

// A library with the files that it had at the latest look.
struct Looked {
    LibraryPtr library;
    FilesPtr files;

    // Where a listed element stands; empty when there is none of that identifier.
    std::optional<std::size_t> Find(const std::string& elementID) const
    {
        if (!library) {
            return std::nullopt;
        }
        const auto found = library->manifest.byID.find(elementID);
        const bool isListed = found != library->manifest.byID.end() && files->Has(found->second);
        return isListed ? std::optional(found->second) : std::nullopt;
    }

    std::string PathOf(const std::string& elementID, const std::string& role) const
    {
        const auto at = Find(elementID);
        return at ? PathAt(*library, *files, *at, role) : std::string();
    }
};

fs::path Absolute(const fs::path& root)
{
    std::error_code error;
    fs::path absolute = orvcore::IsUsablePath(root) ? fs::absolute(root, error) : fs::path();
    return error ? fs::path() : orvcore::WithoutClosingSeparators(std::move(absolute));
}

void Append(std::vector<LeftOut>& list, const Library& library, const std::vector<Refusal>& refused)
{
    for (const Refusal& refusal : refused) {
        list.push_back({orvcore::PathToUTF8(library.folder), library.manifest.id, refusal.elementID, refusal.role,
                        refusal.reason});
    }
}

} // namespace

// The disk is looked at outside the lock; of two looks at the same time the later one's result stays.
struct FolderLibManager::State {
    const std::optional<fs::path> fixedRoot;
    std::mutex mutex;
    CataloguePtr catalogue; // null: nobody has looked yet
    std::unordered_map<std::string, Looked> looked;

    explicit State(std::optional<fs::path> root)
        : fixedRoot(std::move(root))
    {
    }

    CataloguePtr Latest()
    {
        const std::lock_guard lock(mutex);
        return catalogue;
    }

    CataloguePtr Refresh()
    {
        const fs::path root =
            fixedRoot ? *fixedRoot
                      : Absolute(orvcore::PathFromUTF8(orvcore::DebugSettings::GetText("ORV.libraryfolder", {})));
        CataloguePtr fresh = ReadCatalogue(root, Latest());
        const std::lock_guard lock(mutex);
        catalogue = fresh;
        for (auto each = looked.begin(); each != looked.end();) {
            const auto found = fresh->byID.find(each->first);
            const bool isSame = found != fresh->byID.end() && found->second == each->second.library;
            each = isSame ? std::next(each) : looked.erase(each);
        }
        return fresh;
    }

    CataloguePtr LatestOrFresh()
    {
        CataloguePtr latest = Latest();
        return latest ? latest : Refresh();
    }

    LibraryPtr Find(const std::string& libraryID)
    {
        const CataloguePtr latest = LatestOrFresh();
        const auto found = latest->byID.find(libraryID);
        return found != latest->byID.end() ? found->second : nullptr;
    }

    // As Find, from the disk as far as it has changed.
    LibraryPtr FindCurrent(const std::string& libraryID)
    {
        LibraryPtr library = Find(libraryID);
        if (library && library->IsCurrent()) {
            return library;
        }
        library = library ? ReadLibrary(library->folder, kMaxManifests) : nullptr;
        if (library && library->error.empty() && library->manifest.id == libraryID) {
            return library;
        }
        Refresh();
        return Find(libraryID);
    }

    // Looks at the library's files now.
    Looked LookAt(const LibraryPtr& library)
    {
        LibraryFiles files;
        LookAtFiles(library->folder, library->manifest, library->manifest.elements.size(), files);
        return Keep(library, std::move(files));
    }

    Looked Keep(const LibraryPtr& library, LibraryFiles files)
    {
        Looked now{library, std::make_shared<const LibraryFiles>(std::move(files))};
        const std::string& id = library->manifest.id;
        const std::lock_guard lock(mutex);
        if (catalogue && catalogue->byID.count(id) != 0) {
            looked[id] = now;
        }
        return now;
    }

    // The latest look at the library's files, or the first.
    Looked LatestLook(const std::string& libraryID)
    {
        {
            const std::lock_guard lock(mutex);
            const auto found = looked.find(libraryID);
            if (found != looked.end()) {
                return found->second;
            }
        }
        const LibraryPtr library = Find(libraryID);
        return library ? LookAt(library) : Looked();
    }
};

FolderLibManager::FolderLibManager()
    : state_(std::make_unique<State>(std::nullopt))
{
}

FolderLibManager::FolderLibManager(const fs::path& root)
    : state_(std::make_unique<State>(Absolute(root)))
{
}

FolderLibManager::~FolderLibManager() = default;

void FolderLibManager::Initialize() {}

void FolderLibManager::Terminate()
{
    const std::lock_guard lock(state_->mutex);
    state_->catalogue.reset();
    state_->looked.clear();
}

void FolderLibManager::GetLibraryList(std::vector<std::string>& libraryIDs)
{
    libraryIDs.clear();
    for (const LibraryPtr& library : state_->Refresh()->libraries) {
        libraryIDs.push_back(library->manifest.id);
    }
}

std::string FolderLibManager::GetLibraryNameFromLibraryID(const std::string& libraryID)
{
    const LibraryPtr library = state_->Find(libraryID);
    return library ? library->manifest.name : std::string();
}

void FolderLibManager::GetElementIDsForElementType(const std::string& libraryID, const std::string& elementType,
                                                   std::vector<std::string>& elementIDs)
{
    elementIDs.clear();
    const LibraryPtr library = state_->FindCurrent(libraryID);
    if (!library) {
        return;
    }
    const Looked now = state_->LookAt(library);
    for (std::size_t i = 0; i < library->manifest.elements.size(); ++i) {
        if (library->manifest.elements[i].type == elementType && now.files->Has(i)) {
            elementIDs.push_back(library->manifest.elements[i].id);
        }
    }
}

void FolderLibManager::ListElements(const std::string& libraryID, const std::string& elementType,
                                    const std::function<bool(const ListedElement&)>& onElement)
{
    const LibraryPtr library = state_->FindCurrent(libraryID);
    if (!library) {
        return;
    }
    constexpr std::size_t kFirst = 128;   // what is told before other files are looked at
    constexpr std::size_t kAtOnce = 2048; // so that a listing that is ended need not wait for all
    const auto& elements = library->manifest.elements;
    LibraryFiles files;
    for (std::size_t at = 0; at < elements.size();) {
        const std::size_t end = std::min(elements.size(), at == 0 ? kFirst : at + kAtOnce);
        LookAtFiles(library->folder, library->manifest, end, files);
        for (; at < files.present.size(); ++at) {
            if (elements[at].type == elementType && files.Has(at) && !onElement(ElementAt(*library, files, at))) {
                return;
            }
        }
    }
    state_->Keep(library, std::move(files));
}

std::string FolderLibManager::GetElementName(const std::string& libraryID, const std::string& elementID)
{
    const Looked looked = state_->LatestLook(libraryID);
    const auto at = looked.Find(elementID);
    return at ? looked.library->manifest.elements[*at].name : std::string();
}

std::string FolderLibManager::GetPrimaryPath(const std::string& libraryID, const std::string& elementID)
{
    return state_->LatestLook(libraryID).PathOf(elementID, kManifestPrimaryRole);
}

std::string FolderLibManager::GetAlternatePath(const std::string& libraryID, const std::string& elementID)
{
    return state_->LatestLook(libraryID).PathOf(elementID, kManifestAlternateRole);
}

std::string FolderLibManager::GetRenditionPath(const std::string& libraryID, const std::string& elementID,
                                               const std::string& mimeType)
{
    return state_->LatestLook(libraryID).PathOf(elementID, mimeType);
}

std::vector<LeftOut> FolderLibManager::GetLeftOut()
{
    const std::lock_guard lock(state_->mutex);
    std::vector<LeftOut> list;
    if (!state_->catalogue) {
        return list;
    }
    for (const auto& folder : state_->catalogue->leftOut) {
        list.push_back({orvcore::PathToUTF8(folder.folder), folder.libraryID, {}, {}, folder.reason});
    }
    for (const LibraryPtr& library : state_->catalogue->libraries) {
        const auto found = state_->looked.find(library->manifest.id);
        const bool isLooked = found != state_->looked.end();
        const Library& latest = isLooked ? *found->second.library : *library;
        Append(list, latest, latest.manifest.refused);
        if (isLooked) {
            Append(list, latest, found->second.files->refused);
        }
    }
    return list;
}

} // namespace lumolibmanager
