#pragma once

#include <sources/CheckCancel.h>
#include <sources/detail/FolderWalk.h>
#include <sources/detail/LocalEntryMaker.h>

#include <atomic>
#include <vector>

namespace orvcapsule::detail {

/// One listing of folders under one token: polls it, shows its progress and makes the entries, on all processors and
/// still in the order of the walk. It counts as cancelled, too, when the process's executors end. Used by one thread.
class FolderListing {
public:
    using Entries = std::vector<boost::shared_ptr<CapsuleEntry>>;

    FolderListing(const std::string& sourceID, boost::shared_ptr<CheckCancel> cancel);
    FolderListing(const FolderListing&) = delete;
    FolderListing& operator=(const FolderListing&) = delete;
    /// Ends the listing's own line of progress.
    ~FolderListing();

    /// Gives the listing a line of its own in the token's progress category, if it has one.
    void BeginProgress(const orvcore::UTF8String& directory, double weight);
    /// Names the folder on that line.
    void ShowDirectory(const orvcore::UTF8String& directory);
    /// Advances the listing's line, and that of the whole request.
    void Advance(double step);

    /// Polls the token, on any thread; stays true once it was.
    bool IsCancelled();

    /// Appends the entries of the folder's packages and advances by `weight` while it does. Nothing is appended when it
    /// throws or was cancelled.
    void List(const std::filesystem::path& folder, Depth depth, const std::string& directoryKey, double weight,
              Entries& results);

    /// The folders that could not be listed so far.
    const std::vector<FolderFailure>& GetFailures() const noexcept
    {
        return failures_;
    }

private:
    struct Work;
    void MakeEntries(Work& work, const std::string& directoryKey, double step);

    const std::string sourceID_;
    boost::shared_ptr<CheckCancel> cancel_;
    std::shared_ptr<orvappsupport::ProgressItem> item_;
    LocalEntryMaker maker_;
    std::vector<FolderFailure> failures_;
    std::atomic<bool> cancelled_ = false;
};

} // namespace orvcapsule::detail
