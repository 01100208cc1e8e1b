#include <lumolibmanager/FolderLibManager.h>

#include <lumolibmanager/detail/FolderCatalogue.h>
#include <lumolibmanager/detail/LibraryFiles.h>

#include <orvcore/host/DebugSettings.h>

#include <algorithm>
#include <mutex>
#include <optional>

// What is known of the disk is immutable and shared: a catalogue (all libraries with their manifests) and, for each
// library that was asked for, a look at its files. A call takes what it needs under the lock and works with that, so a
// library may be read again, or the manager terminated, while another thread still answers from the older one. A look
// belongs to the very manifest that it was made with (Looked holds both): indexes of files mean nothing in another one.

namespace lumolibmanager {

namespace {

namespace fs = std::filesystem;
using namespace detail;

using FilesPtr = std::shared_ptr<const LibraryFiles>;

// Full path of a file of the element, which is the one at `at`; empty when it has no such file.
std::string PathOf(const Library& library, const LibraryFiles& files, const ManifestElement& element, std::size_t at,
                   std::string_view role)
{
    const auto& all = element.files;
    const auto file = std::find_if(all.begin(), all.end(), [&](const ManifestFile& each) { return each.role == role; });
    if (file == all.end() || !files.Has(at, static_cast<std::size_t>(file - all.begin()))) {
        return {};
    }
    std::string path = orvcore::ToNarrow(orvcore::PathToUTF8(library.folder)); // appended as texts: far quicker
    path.append(1, '/').append(file->path);
    std::replace(path.begin(), path.end(), '/', static_cast<char>(fs::path::preferred_separator));
    return path;
}

ListedElement Listed(const Library& library, const LibraryFiles& files, const ManifestElement& element, std::size_t at)
{
    const auto path = [&](std::string_view role) { return PathOf(library, files, element, at, role); };
    const LibraryFiles::Facts& facts = files.latest[at + files.latest.size() - files.present.size()];
    return {element.id,
            element.name,
            path(kManifestPrimaryRole),
            path(kManifestAlternateRole),
            path(kMimeType_ImagePNG),
            path(kMimeType_VideoMP4),
            facts.primary,
            facts.alternate};
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
        const auto at = library->manifest.Find(elementID);
        return at && files->Has(*at) ? at : std::nullopt;
    }

    std::string PathOf(const std::string& elementID, std::string_view role) const
    {
        const auto at = Find(elementID);
        return at ? lumolibmanager::PathOf(*library, *files, library->manifest.All()[*at], *at, role) : std::string();
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
        list.push_back({orvcore::PathToUTF8(library.folder), library.manifest.ID(), refusal.elementID, refusal.role,
                        refusal.reason});
    }
}

} // namespace

// The disk is looked at outside the lock; of two looks at the same time the later one's result stays.
struct FolderLibManager::State {
    const std::optional<fs::path> fixedRoot;
    std::mutex mutex;
    CataloguePtr catalogue; // null: not looked at yet
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
        if (library && library->error.empty() && library->manifest.ID() == libraryID) {
            return library;
        }
        Refresh();
        return Find(libraryID);
    }

    // Looks at the library's files now.
    Looked LookAt(const LibraryPtr& library)
    {
        LibraryFiles files;
        LookAtFiles(library->folder, library->manifest.All(), files);
        return Keep(library, std::move(files));
    }

    Looked Keep(const LibraryPtr& library, LibraryFiles files)
    {
        files.latest = {};
        Looked now{library, std::make_shared<const LibraryFiles>(std::move(files))};
        const std::string& id = library->manifest.ID();
        const std::lock_guard lock(mutex);
        if (catalogue && catalogue->byID.count(id) != 0) {
            looked[id] = now;
        }
        return now;
    }

    // The latest look at the library's files; empty when there was none.
    Looked KnownLook(const std::string& libraryID)
    {
        const std::lock_guard lock(mutex);
        const auto found = looked.find(libraryID);
        return found != looked.end() ? found->second : Looked();
    }

    // As KnownLook; looks when there is no look yet.
    Looked LatestLook(const std::string& libraryID)
    {
        if (Looked known = KnownLook(libraryID); known.library) {
            return known;
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
    // Held by name: the state lets go of it as soon as another thread looks at the disk.
    const CataloguePtr fresh = state_->Refresh();
    for (const LibraryPtr& library : fresh->libraries) {
        libraryIDs.push_back(library->manifest.ID());
    }
}

std::string FolderLibManager::GetLibraryNameFromLibraryID(const std::string& libraryID)
{
    const LibraryPtr library = state_->Find(libraryID);
    return library ? library->manifest.Name() : std::string();
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
    const auto elements = library->manifest.All();
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (elements[i].type == elementType && now.files->Has(i)) {
            elementIDs.push_back(elements[i].id);
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
    constexpr std::size_t kFirst = 128;   // what is told before other elements and their files are looked at
    constexpr std::size_t kAtOnce = 2048; // so that a listing that is ended need not wait for all
    LibraryFiles files;
    auto elements = library->manifest.First(kFirst);
    for (std::size_t at = 0; at < elements.size(); elements = library->manifest.First(at + kAtOnce)) {
        LookAtFiles(library->folder, elements, files);
        for (; at < elements.size(); ++at) {
            const ManifestElement& element = elements[at];
            if (element.type == elementType && files.Has(at) && !onElement(Listed(*library, files, element, at))) {
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
    return at ? looked.library->manifest.All()[*at].name : std::string();
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
    const CataloguePtr catalogue = state_->Latest();
    std::vector<LeftOut> list;
    if (!catalogue) {
        return list;
    }
    for (const auto& folder : catalogue->leftOut) {
        list.push_back({orvcore::PathToUTF8(folder.folder), folder.libraryID, {}, {}, folder.reason});
    }
    for (const LibraryPtr& library : catalogue->libraries) {
        const Looked looked = state_->KnownLook(library->manifest.ID());
        const Library& latest = looked.library ? *looked.library : *library;
        Append(list, latest, latest.manifest.Refused());
        if (looked.files) {
            Append(list, latest, looked.files->refused);
        }
    }
    return list;
}

} // namespace lumolibmanager
