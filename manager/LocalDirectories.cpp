#include <manager/GraphicSourceManager.h>

#include <manager/detail/Delivery.h>
#include <manager/detail/IndexEntries.h>
#include <manager/detail/RequestProgress.h>
#include <manager/detail/TaskEnd.h>
#include <sources/LocalGraphicsSource.h>
#include <sources/SourceNames.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/tasks/MainThread.h>

#include <algorithm>
#include <stdexcept>

namespace orvcapsule {

namespace {

bool IsGone(const orvcore::UTF8String& file)
{
    std::error_code error; // where nobody may look, the file may well be there
    return orvcore::InspectTarget(orvcore::PathFromUTF8(file), error).kind == orvcore::FileKind::Nothing && !error;
}

// Of the changed files those that are gone leave the index, even when the relisting was cancelled: whatever replaced it
// may not name them again. A file that exists keeps its rows, whatever the listing says of it, until it is listed: the
// listing may have failed, or looked elsewhere.
void ReplaceIndexed(const detail::IndexSession& index, const std::vector<orvcore::UTF8String>& files,
                    const GraphicSourceManager::EntryList& entries, CheckCancel& token)
{
    std::vector<orvcore::UTF8String> gone;
    for (const orvcore::UTF8String& file : files) {
        if (!IsGone(file)) {
            continue;
        }
        gone.push_back(file);
        orvcore::UTF8String plain = orvcore::PathToUTF8(orvcore::PathFromUTF8(file).lexically_normal());
        if (plain != file) { // a host may spell it otherwise than a listing
            gone.push_back(std::move(plain));
        }
    }
    if (!gone.empty()) { // no paths would mean all
        index.Clear(gone);
    }
    detail::ReindexEntries(index, entries, token);
}

// What the source tells last of whether more follows. What it hands out before it fails stands.
bool ListFolder(ILocalGraphicSource& source, const orvcore::UTF16String& directory,
                const GraphicSourceManager::TokenPtr& token, GraphicSourceManager::EntryList& entries)
{
    bool last = true;
    try {
        source.SearchDirectory(
            [&](const GraphicSourceManager::EntryList& found, const orvcore::UTF16String&, bool isLast) {
                entries.insert(entries.end(), found.begin(), found.end());
                last = isLast;
            },
            directory, token);
    } catch (...) {
        detail::ReportCurrentException();
        last = true;
    }
    std::erase(entries, nullptr);
    return last;
}

} // namespace

void GraphicSourceManager::UpdateCustomDirectoryList(
    const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& directories)
{
    Post(nullptr, [directories](GraphicSourceManager& manager) { manager.ReplaceCustomDirectories(directories); });
}

// A local source never changes; a new one takes the old one's place in the list, and whoever still uses the old one
// holds it. The working folder is one for all of them and was prepared with the first.
void GraphicSourceManager::ReplaceCustomDirectories(
    const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& directories)
{
    const SourcePtr old = FindGraphicSource(kLocalSourceID);
    const auto* local = dynamic_cast<const LocalGraphicsSource*>(old.get());
    if (local == nullptr) {
        return;
    }
    const SourcePtr successor = local->MakeSuccessor(directories);
    if (!successor) {
        throw std::logic_error("the custom folders stay: the local source makes no successor");
    }
    const std::lock_guard lock(lock_);
    std::replace(sources_.begin(), sources_.end(), old, successor);
}

void GraphicSourceManager::LocalDirectoryChanged(const std::vector<GraphicSourceState>& states, bool showProgress)
{
    if (!HasIndex()) {
        return;
    }
    for (const auto& [directory, token] : directoryTokens_) {
        AbortToken(token);
    }
    Renew(directoryChangeToken_);
    PostListing(states, showProgress, directoryChangeToken_);
}

void GraphicSourceManager::LocalDirectoryChanged(const std::string& sourceID, const orvcore::UTF8String& directory,
                                                 const std::vector<orvcore::UTF8String>& files)
{
    if (!HasIndex()) {
        return;
    }
    TokenPtr& token = directoryTokens_[directory];
    Renew(token);
    const SourcePtr source = FindGraphicSource(sourceID);
    const double weight = source ? static_cast<double>(source->GetProgressWeight()) : 1.0;
    detail::OpenProgress(*token, weight, detail::kProgressItemTitle);
    Post(token,
         [sourceID, directory, files, token, callback = CopyCallbacks().localDirectory](GraphicSourceManager& manager) {
             manager.GetLocalGraphicsFromDirectory(sourceID, directory, files, token, callback);
         });
}

void GraphicSourceManager::GetLocalGraphicsFromDirectory(const std::string& sourceID,
                                                         const orvcore::UTF8String& directory,
                                                         const std::vector<orvcore::UTF8String>& files,
                                                         const TokenPtr& token,
                                                         const std::shared_ptr<DirectoryCallback>& callback) const
{
    EntryList entries;
    bool last = true;
    {
        const detail::ProgressEnd end(*token);
        const SourcePtr source = FindGraphicSource(sourceID);
        if (auto* local = dynamic_cast<ILocalGraphicSource*>(source.get())) {
            last = ListFolder(*local, orvcore::PathTextToUTF16(directory), token, entries);
        }
        ReplaceIndexed(*index_, files, entries, *token);
    }
    if (orvcore::IsTerminating()) {
        return;
    }
    orvcore::AsyncCallFromMainThread([entries = std::move(entries), directory, last, token, callback]() mutable {
        if (token->GetAbort()) {
            detail::TellCanceled(*token);
            detail::FreeElsewhere(std::move(entries));
        } else if (callback && *callback) {
            (*callback)(entries, directory, last);
        }
    });
}

std::set<orvcore::UTF8String> GraphicSourceManager::GetLocalDirectories() const
{
    std::set<orvcore::UTF8String> directories;
    if (!HasIndex()) {
        return directories;
    }
    for (const auto& source : CopyLocalSources()) {
        directories.merge(source->GetDirectories());
    }
    return directories;
}

std::vector<FolderFailure> GraphicSourceManager::GetFolderFailures(const std::string& sourceID) const
{
    const SourcePtr source = FindGraphicSource(sourceID);
    const auto* local = dynamic_cast<const ILocalGraphicSource*>(source.get());
    return local != nullptr ? local->GetFolderFailures() : std::vector<FolderFailure>();
}

orvcore::UTF8String GraphicSourceManager::GetThumbnailPath(const EntryPtr& entry, const TokenPtr& token) const
{
    for (const SourcePtr& source : CopySources()) {
        if (!entry || (token && token->GetAbort())) {
            break;
        }
        if (source->GetSourceID() == entry->GetSourceID()) {
            return source->GetThumbnailPath(entry, token);
        }
    }
    return {};
}

} // namespace orvcapsule
