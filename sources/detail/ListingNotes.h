#pragma once

#include <sources/CapsuleEntry.h>
#include <sources/detail/NotedFile.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvcapsule::detail {

class StoredNotes;

/// What the last listing of a place (a folder, a cloud library) read in its files, kept in a file of the local working
/// folder, so that the next one reads only what is new or changed. It is a cache: missing, damaged, of another version
/// or language, or changed by another process, it costs time and nothing else.
///
/// Recall may be called from several threads at once.
class ListingNotes {
public:
    /// What is known of the files of `place`, in the application language of now. A note is read when it is asked for.
    /// @param place what tells it from the source's others
    /// @param stop  asked now and then; true ends a Save before it changes anything
    ListingNotes(const std::string& sourceID, const orvcore::UTF8String& place, std::function<bool()> stop);
    ~ListingNotes();

    /// Fills what the file says of the entry, when it is as it was: when `state` has the subject and facts noted.
    bool Recall(CapsuleEntry& entry, NotedFile& state) const;

    /// Keeps what is known now; nothing is recalled from then on. A file that has changed only just now is passed
    /// over, because another change might bear the same time.
    void Save(const std::vector<const NotedEntry*>& entries);

private:
    std::string sourceID_;
    orvcore::UTF8String place_;
    std::filesystem::path file_;
    std::function<bool()> stop_;
    std::unique_ptr<const StoredNotes> notes_;
    orvcore::FileTime settled_; ///< files changed before this can be trusted
    bool isUsed_ = true;
    // Counted by several workers.
    mutable std::atomic<std::size_t> recalled_ = 0;
};

} // namespace orvcapsule::detail
