#include <lumolibmanager/detail/FolderCatalogue.h>

#include <lumolibmanager/FolderLibManager.h>

#include <orvcore/files/Files.h>
#include <orvcore/host/DebugSettings.h>
#include <orvcore/json/JSON.h>
#include <orvcore/text/Printable.h>

#include <algorithm>
#include <unordered_map>

// A manifest is read again only when its file differs in size or times. Some file systems keep times of two seconds: a
// change in the same two seconds would look like none, so a manifest that was young when it was read counts as unknown
// the next time (isSettled). The state is asked before the file is read: a change in between is then seen as one.
//
// Folders and manifests come from a synchronisation, and with it from other people: their number and their bytes are
// bounded, links are left out, and a manifest that cannot be used costs its own library.

namespace lumolibmanager::detail {

namespace {

namespace fs = std::filesystem;
using orvcore::FileInfo;
using orvcore::FileKind;

// The coarsest times that a file system keeps are two seconds apart.
constexpr std::int64_t kSettleMilliseconds = 2000;

FileInfo StateOf(const fs::path& folder)
{
    std::error_code error;
    FileInfo state = orvcore::InspectPath(folder / kManifestName, error);
    return error ? FileInfo{} : state;
}

bool IsSettled(const FileInfo& state)
{
    const std::chrono::milliseconds settle(orvcore::DebugSettings::GetInt("ORV.entrysettletime", kSettleMilliseconds));
    const auto oldest = std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now()) - settle;
    return state.modified < oldest && state.replaced < oldest;
}

Manifest ReadFrom(const fs::path& file, const FileInfo& state)
{
    if (state.kind == FileKind::Nothing) {
        throw ManifestError("its manifest library.json is not there yet");
    }
    if (state.kind != FileKind::File) {
        throw ManifestError("its manifest library.json is a link or no file");
    }
    std::error_code error;
    std::string text = orvcore::ReadWholeFile(file, orvcore::serialization::kMaxJSONSize, error);
    if (error) {
        throw ManifestError("its manifest library.json cannot be read: " + error.message());
    }
    return Manifest(std::move(text));
}

// The folders that may be libraries, in name order. Synchronisation keeps its own things under names with a dot.
std::vector<fs::path> FoldersBelow(const fs::path& root, Catalogue& catalogue)
{
    std::vector<fs::path> folders;
    std::error_code error;
    const auto take = [&](const fs::path& path, FileKind kind) {
        if (orvcore::PathToUTF8(path.filename()).starts_with(u8'.')) {
            return true;
        }
        if (kind == FileKind::Link && orvcore::IsDirectory(path) && catalogue.leftOut.size() < kMaxLibraries) {
            catalogue.leftOut.push_back({path, {}, "it is a link, which could lead out of the libraries' folder"});
        }
        if (kind == FileKind::Directory) {
            folders.push_back(path);
        }
        return folders.size() <= kMaxLibraries;
    };
    orvcore::ReadDirectory(root, take, error);
    if (error) {
        catalogue.leftOut.push_back({root, {}, "the folder cannot be read: " + error.message()});
    }
    if (folders.size() > kMaxLibraries) {
        folders.pop_back();
        catalogue.leftOut.push_back(
            {root, {}, "of more than " + std::to_string(kMaxLibraries) + " folders the rest is left out"});
    }
    std::sort(folders.begin(), folders.end(), [](const fs::path& a, const fs::path& b) {
        return orvcore::PathToUTF8(a.filename()) < orvcore::PathToUTF8(b.filename());
    });
    return folders;
}

void Add(Catalogue& catalogue, const LibraryPtr& library)
{
    catalogue.read.push_back(library);
    std::string reason = library->error;
    if (reason.empty()) {
        const auto [first, isNew] = catalogue.byID.emplace(library->manifest.ID(), library);
        if (isNew) {
            catalogue.libraries.push_back(library);
            return;
        }
        reason = "a library before it has the same identifier: " +
                 orvcore::Printable(orvcore::AsNarrow(orvcore::PathToUTF8(first->second->folder.filename())));
    }
    catalogue.leftOut.push_back({library->folder, library->manifest.ID(), std::move(reason)});
}

} // namespace

bool Library::IsCurrent() const
{
    return isSettled && StateOf(folder) == state;
}

LibraryPtr ReadLibrary(const fs::path& folder, std::uint64_t most)
{
    auto library = std::make_shared<Library>();
    library->folder = folder;
    library->state = StateOf(folder);
    if (library->state.size > most) {
        library->error = "the libraries' manifests together are larger than allowed";
        return library;
    }
    library->isSettled = IsSettled(library->state);
    try {
        library->manifest = ReadFrom(folder / kManifestName, library->state);
    } catch (const ManifestError& error) {
        library->error = error.what();
    }
    return library;
}

CataloguePtr ReadCatalogue(const fs::path& root, const CataloguePtr& before)
{
    auto catalogue = std::make_shared<Catalogue>();
    if (root.empty()) {
        return catalogue;
    }
    std::unordered_map<fs::path::string_type, LibraryPtr> known;
    if (before) {
        for (const LibraryPtr& library : before->read) {
            known.emplace(library->folder.native(), library);
        }
    }
    std::uint64_t size = 0;
    for (const fs::path& folder : FoldersBelow(root, *catalogue)) {
        const auto found = known.find(folder.native());
        const bool isKnown = found != known.end() && found->second->IsCurrent();
        const LibraryPtr library = isKnown ? found->second : ReadLibrary(folder, kMaxManifests - size);
        size += std::min<std::uint64_t>(library->state.size, kMaxManifests - size);
        Add(*catalogue, library);
    }
    return catalogue;
}

} // namespace lumolibmanager::detail
