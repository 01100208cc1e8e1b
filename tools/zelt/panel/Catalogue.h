#pragma once

#include <tools/zelt/output/EntryOutput.h>
#include <tools/zelt/panel/FolderTable.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace zelt {

/// The templates that the page may know, each with a number that stays while the program runs, whatever happens to the
/// package. Each change has a revision, so that a page asks for what is new to it alone. Any thread.
class Catalogue {
public:
    using Entry = boost::shared_ptr<orvcapsule::CapsuleEntry>;

    explicit Catalogue(const std::vector<std::string>& folders);

    /// @name A listing of everything
    /// @{
    void BeginListing();
    void Put(const Entries& entries);
    /// Drops what was not put since it began.
    void EndListing();
    /// @}

    /// From now on these are all that lies directly in the folder.
    void PutFolder(const std::string& folder, const Entries& entries);

    std::uint64_t Revision() const;
    /// As JSON, "rows" (EntryRow.h) and the numbers that are "gone": the oldest changes after a revision, at most a
    /// thousand, and the "revision" with which they have been told; "folders" are all.
    std::string ChangesAfter(std::uint64_t revision) const;

    /// Null when there is none of this number, or it is gone.
    Entry Find(std::uint64_t id) const;
    /// The number of the template at a path, one that is there or one that will be.
    std::uint64_t NumberOf(const std::string& path);
    /// The numbers of those of the paths that are known.
    std::vector<std::uint64_t> NumbersOf(const std::set<orvcore::UTF16String>& paths) const;

private:
    struct Record {
        Entry entry;                // null: gone
        std::uint64_t revision = 0; // 0: never told
        std::uint64_t listing = 0;  // in which it was found last
        std::size_t folder = 0;
    };

    std::uint64_t NumberUnlocked(const std::string& path);
    std::uint64_t PutUnlocked(const Entry& entry);
    void Remove(std::uint64_t id);
    void Touch(std::uint64_t id);

    mutable std::mutex mutex_;
    FolderTable folders_;
    std::vector<Record> records_;                            // by number
    std::unordered_map<std::string, std::uint64_t> numbers_; // by path
    std::map<std::uint64_t, std::uint64_t> changes_;         // from revision to number, the last of each
    std::uint64_t revision_ = 0;
    std::uint64_t listing_ = 0;
};

} // namespace zelt
