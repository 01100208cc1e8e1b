#include <manager/GraphicSourceManager.h>

#include <manager/detail/Delivery.h>
#include <manager/detail/IndexEntries.h>
#include <manager/detail/RequestProgress.h>
#include <sources/LocalGraphicsSource.h>
#include <sources/SourceNames.h>

#include <orvcore/files/Files.h>

#include <algorithm>
#include <iterator>

namespace orvcapsule {

namespace {

// What the index knew of changed and of listed files gives way to what was found: of files that were not listed at
// once, of the others entry by entry. Of a cancelled relisting only the files that are gone leave the index: whatever
// replaced it may not name them again.
void ReplaceIndexed(const detail::IndexSession& index, const std::vector<orvcore::UTF8String>& files,
                    const GraphicSourceManager::EntryList& entries, CheckCancel& token)
{
    const bool cancelled = token.GetAbort();
    std::set<orvcore::UTF8String> listed;
    for (const GraphicSourceManager::EntryPtr& entry : entries) {
        listed.insert(entry->path);
    }
    std::vector<orvcore::UTF8String> paths;
    std::copy_if(files.begin(), files.end(), std::back_inserter(paths), [&](const orvcore::UTF8String& file) {
        return cancelled ? !orvcore::Exists(orvcore::PathFromUTF8(file)) : listed.count(file) == 0;
    });
    if (!paths.empty()) { // no paths would mean all
        index.Clear(paths);
    }
    detail::ReindexEntries(index, entries, token);
}

// What the source tells last of whether more follows. A source that fails contributes nothing.
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
        entries.clear();
        return true;
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
    const auto changed = std::make_shared<LocalGraphicsSource>(local->GetRootFolder(), directories);
    const std::lock_guard lock(lock_);
    std::replace(sources_.begin(), sources_.end(), old, SourcePtr(changed));
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
            last = ListFolder(*local, orvcore::ToUTF16(directory), token, entries);
        }
        ReplaceIndexed(*index_, files, entries, *token);
    }
    orvcore::AsyncCallFromMainThread([entries = std::move(entries), directory, last, token, callback] {
        if (token->GetAbort()) {
            detail::TellCanceled(*token);
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
