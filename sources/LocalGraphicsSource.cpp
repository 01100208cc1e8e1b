#include <sources/LocalGraphicsSource.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Files.h>
#include <orvcore/host/Localiser.h>
#include <orvcore/tasks/Executor.h>
#include <package/Workspace.h>
#include <sources/SearchIndex.h>
#include <sources/SourceNames.h>
#include <sources/detail/FailureLog.h>
#include <sources/detail/FolderListing.h>

#include <algorithm>
#include <tuple>
#include <typeinfo>

namespace orvcapsule {

// A listing goes through targets: the root with all that lies below, then each custom directory by itself. What an
// object lists never changes (UpdateCustomDirectoryList makes a successor), so listings and relistings run side by side
// without locks; only the log of failures changes, and it locks itself.
//
// The order at a listing's end: entries are handed out, the log of failures is brought up to date, and last an
// exception tells of folders that could not be listed. A caller that ignores the exception has lost nothing.

namespace fs = std::filesystem;
using detail::Depth;
using detail::FolderListing;
using orvcore::UTF16String;
using orvcore::UTF8String;

// One folder to list, and how.
struct LocalGraphicsSource::Target {
    fs::path folder; ///< full path; empty: there is nothing to list
    Depth depth = Depth::OneFolder;
    std::string key;       ///< its entries' directory key
    UTF16String directory; ///< what it is called before the caller
};

namespace {

// The last thing a listing does: what could be listed has been handed out.
// A cancelled listing throws nothing: the caller has given it up, and its failures may only be half of them.
void TellFailures(FolderListing& listing)
{
    if (!listing.GetFailures().empty() && !listing.IsCancelled()) {
        throw unlisted_folders_exception(listing.GetFailures());
    }
}

UTF8String FilterName()
{
    return orvcore::Localiser::Resolve("$$$/GraphicSource/local/TemplatesFolder=Local Templates Folder");
}

FolderState StateOf(const UTF8String& name, const std::string& id, const fs::path& folder)
{
    FolderState state{name, id, FolderState::State::Available, {}};
    std::error_code error;
    if (orvcore::InspectTarget(folder, error).kind == orvcore::FileKind::Nothing && !error) {
        state.state = FolderState::State::Missing;
        return state;
    }
    if (!error) {
        orvcore::ReadDirectory(
            folder, [](const fs::path&, orvcore::FileKind) { return false; }, error);
    }
    state.state = error ? FolderState::State::Unreadable : FolderState::State::Available;
    state.reason = error;
    return state;
}

} // namespace

LocalGraphicsSource::LocalGraphicsSource(const UTF16String& rootFolder,
                                         const std::vector<std::pair<UTF8String, UTF8String>>& customDirectories)
    : rootFolder_(rootFolder)
    , customDirectories_(customDirectories)
    , root_(detail::FullFolderPath(orvcore::PathFromUTF16(rootFolder)))
    , failures_(std::make_unique<detail::FailureLog>())
{
}

LocalGraphicsSource::~LocalGraphicsSource() = default;

std::shared_ptr<LocalGraphicsSource>
LocalGraphicsSource::MakeSuccessor(const std::vector<std::pair<UTF8String, UTF8String>>& customDirectories) const
{
    // By the exact class: a derived one that does not override this must not turn into its base without a word.
    return typeid(*this) == typeid(LocalGraphicsSource)
               ? std::make_shared<LocalGraphicsSource>(rootFolder_, customDirectories)
               : nullptr;
}

const UTF16String& LocalGraphicsSource::GetRootFolder() const noexcept
{
    return rootFolder_;
}

const std::vector<std::pair<UTF8String, UTF8String>>& LocalGraphicsSource::GetCustomDirectories() const noexcept
{
    return customDirectories_;
}

void LocalGraphicsSource::Initialize()
{
    try {
        InitTempDirectory(true);
    } catch (const fs::filesystem_error&) { // templates can be browsed without previews
    }
}

std::string LocalGraphicsSource::GetSourceID() const
{
    return kLocalSourceID;
}

void LocalGraphicsSource::GetFilter(GraphicFilterID& filter)
{
    using SubFilter = GraphicFilterID::SubFilter;
    filter.name = FilterName();
    filter.sourceID = GetSourceID();
    filter.subFilters.clear();
    filter.subFilters.push_back({filter.name, kDefaultLocalSourceID, true});
    for (const auto& [name, path] : customDirectories_) {
        if (!path.empty()) {
            const bool available = detail::CanBeListed(orvcore::PathFromUTF8(path));
            filter.subFilters.push_back({name, orvcore::ToNarrow(path), available});
        }
    }
    const auto byName = [](const SubFilter& one, const SubFilter& other) {
        return std::tie(one.name, one.id) < std::tie(other.name, other.id);
    };
    // The root stays first, as the interface promises.
    std::sort(filter.subFilters.begin() + 1, filter.subFilters.end(), byName);
}

std::set<UTF8String> LocalGraphicsSource::GetDirectories() const
{
    std::set<UTF8String> directories;
    if (!root_.empty()) {
        directories.insert(orvcore::PathToUTF8(root_));
    }
    // A host watches these folders. It needs those that hold packages, so the whole tree is walked on the caller's
    // thread; only the end of the process cuts that short.
    const detail::FoundPackages found = detail::FindPackages(
        root_, Depth::AllBelow, [](const auto&, const auto&) {}, [] { return orvcore::IsTerminating(); });
    for (const FolderFailure& failure : found.failures) {
        // An incomplete answer would make the host end its watching of folders that are still there.
        if (detail::ConcernsWholeWalk(failure.reason) || orvcore::PathFromUTF8(failure.folder) == root_) {
            throw unlisted_folders_exception({failure});
        }
    }
    for (const detail::FolderPath& folder : found.folders) {
        directories.insert(orvcore::PathToUTF8(*folder));
    }
    for (const auto& [name, path] : customDirectories_) {
        if (orvcore::IsDirectory(orvcore::PathFromUTF8(path))) {
            directories.insert(path);
        }
    }
    return directories;
}

UTF8String LocalGraphicsSource::GetThumbnailPath(const boost::shared_ptr<CapsuleEntry>& entry,
                                                 const boost::shared_ptr<CheckCancel>& cancel) const
{
    return LocalGraphicsSource::GetThumbnail(entry, cancel).path;
}

Thumbnail LocalGraphicsSource::GetThumbnail(const boost::shared_ptr<CapsuleEntry>& entry,
                                            const boost::shared_ptr<CheckCancel>& cancel) const
{
    const detail::LocalEntryMaker maker(GetSourceID(),
                                        [&] { return (cancel && cancel->GetAbort()) || orvcore::IsTerminating(); });
    return entry ? maker.GetThumbnail(*entry) : Thumbnail();
}

float LocalGraphicsSource::GetProgressWeight() const
{
    return 0.9F;
}

void LocalGraphicsSource::SearchDB(const std::vector<UTF16String>& terms, std::set<UTF16String>& matches)
{
    QueryRapidFindDB(terms, matches);
}

std::vector<LocalGraphicsSource::Target> LocalGraphicsSource::AllTargets() const
{
    std::vector<Target> targets = {{root_, Depth::AllBelow, kDefaultLocalSourceID, rootFolder_}};
    for (const auto& [name, path] : customDirectories_) {
        if (!path.empty()) {
            targets.push_back({detail::FullFolderPath(orvcore::PathFromUTF8(path)), Depth::OneFolder,
                               orvcore::ToNarrow(path), orvcore::PathTextToUTF16(path)});
        }
    }
    return targets;
}

// The root is listed also when it is missing, so that a host gets its (empty) directory call. A custom directory that
// cannot be asked about counts as there: its failure is then told by the listing.
std::vector<LocalGraphicsSource::Target> LocalGraphicsSource::ExistingTargets() const
{
    std::vector<Target> targets = AllTargets();
    const auto isMissing = [](const Target& target) { return !detail::MayBeThere(target.folder); };
    targets.erase(std::remove_if(targets.begin() + 1, targets.end(), isMissing), targets.end()); // the root counts
    return targets;
}

// A name that is spelt like a folder of ours goes before one that only leads to it, through a link or in another case.
LocalGraphicsSource::Target LocalGraphicsSource::FindTarget(const UTF16String& directory) const
{
    const fs::path wanted = orvcore::PathFromUTF16(directory);
    Target found{{}, Depth::OneFolder, {}, directory};
    if (wanted.empty()) {
        return found;
    }
    const std::vector<Target> targets = AllTargets();
    const bool isRoot = directory == orvcore::ToUTF16(kDefaultLocalSourceID);
    auto target = std::find_if(targets.begin(), targets.end(), [&](const Target& one) {
        return isRoot || detail::IsSamePath(one.folder, wanted) ||
               detail::IsSamePath(orvcore::PathFromUTF16(one.directory), wanted);
    });
    if (target == targets.end()) {
        target = std::find_if(targets.begin(), targets.end(),
                              [&](const Target& one) { return detail::LeadToSameFolder(one.folder, wanted); });
    }
    if (target != targets.end()) {
        found = *target;
        // The caller gets back the name that it used, whatever the target's own spelling.
        found.directory = directory;
    } else {
        // The path as the walk of the whole tree would spell it: another spelling would make a second entry, with rows
        // of its own in the index, of the same package.
        found.folder = detail::PathInWalk(wanted, root_);
        found.key = kDefaultLocalSourceID;
    }
    return found;
}

// Every custom directory counts for progress, one that is not there as done from the start.
double LocalGraphicsSource::BeginListing(FolderListing& listing, std::size_t targets) const
{
    const std::size_t all = customDirectories_.size() + 1;
    const double step = double{GetProgressWeight()} / static_cast<double>(all);
    listing.Advance(step * static_cast<double>(all - targets));
    return step;
}

void LocalGraphicsSource::Search(const std::vector<UTF16String>& terms,
                                 std::vector<boost::shared_ptr<CapsuleEntry>>& results, int /*first*/, int /*count*/,
                                 int& total, boost::shared_ptr<CheckCancel> cancel) const
{
    const std::size_t before = results.size();
    FolderListing listing(GetSourceID(), std::move(cancel));
    try {
        // Terms are SearchDB's business, which asks the index; this operation has them because sources that page need
        // them.
        if (terms.empty()) {
            const std::vector<Target> targets = ExistingTargets();
            const double step = BeginListing(listing, targets.size());
            for (const Target& target : targets) {
                listing.List(target.folder, target.depth, target.key, step, results);
            }
            if (listing.IsCancelled()) {
                results.clear();
            } else {
                failures_->ReplaceAll(listing.GetFailures());
            }
        }
        total = static_cast<int>(results.size());
    } catch (...) {
        results.resize(before);
        throw;
    }
    TellFailures(listing);
}

void LocalGraphicsSource::SearchByDirectory(OnDirectory onDirectory, std::vector<UTF16String>& directories,
                                            boost::shared_ptr<CheckCancel> cancel)
{
    FolderListing listing(GetSourceID(), std::move(cancel));
    const std::vector<Target> targets = ExistingTargets();
    listing.BeginProgress(FolderListing::TitleFor(orvcore::PathToUTF8(root_)), double{GetProgressWeight()});
    const double step = BeginListing(listing, targets.size());
    directories.clear();
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const Target& target = targets[i];
        FolderListing::Entries entries;
        listing.ShowTitle(FolderListing::TitleFor(orvcore::PathToUTF8(target.folder)));
        listing.List(target.folder, target.depth, target.key, step, entries);
        if (listing.IsCancelled()) {
            return;
        }
        directories.push_back(target.directory);
        onDirectory(entries, target.directory, i + 1 == targets.size());
    }
    failures_->ReplaceAll(listing.GetFailures());
    TellFailures(listing);
}

void LocalGraphicsSource::SearchDirectory(OnDirectory onDirectory, const UTF16String& directory,
                                          boost::shared_ptr<CheckCancel> cancel)
{
    FolderListing listing(GetSourceID(), std::move(cancel));
    const Target target = FindTarget(directory);
    const double weight = double{GetProgressWeight()};
    FolderListing::Entries entries;
    listing.BeginProgress(FolderListing::TitleFor(target.folder.empty() ? orvcore::PathTextToUTF8(directory)
                                                                        : orvcore::PathToUTF8(target.folder)),
                          weight);
    listing.List(target.folder, target.depth, target.key, weight, entries);
    if (listing.IsCancelled()) {
        return;
    }
    // Before the call: a host that shows the folder asks for its failures there.
    failures_->Replace(target.folder, target.depth, listing.GetFailures());
    onDirectory(entries, directory, true);
    TellFailures(listing);
}

std::vector<FolderFailure> LocalGraphicsSource::GetFolderFailures() const
{
    return failures_->Get();
}

bool LocalGraphicsSource::HasDirectory(const UTF16String& directory) const
{
    return !FindTarget(directory).folder.empty();
}

std::vector<FolderState> LocalGraphicsSource::GetFolderStates() const
{
    // Asks the file system now and looks at no listing: a disk may have come or gone since the last one.
    std::vector<FolderState> states;
    if (!root_.empty()) {
        states.push_back(StateOf(FilterName(), kDefaultLocalSourceID, root_));
    }
    for (const auto& [name, path] : customDirectories_) {
        if (!path.empty()) {
            states.push_back(StateOf(name, orvcore::ToNarrow(path), orvcore::PathFromUTF8(path)));
        }
    }
    return states;
}

} // namespace orvcapsule
