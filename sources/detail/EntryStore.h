#pragma once

#include <sources/CapsuleEntry.h>

#include <orvcore/files/FileSystem.h>

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <filesystem>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvcapsule::detail {

/// What a listing found out about one package, beside its entry.
struct PackageState {
    orvcore::FileInfo facts;
    bool hasStill = false;
    bool hasVideo = false;
    /// The package was read in good order and nothing of it is left to be tried again.
    bool isKnown = false;
};

/// What the last listing of a folder read in its packages, kept in a file of the local working folder, so that the next
/// listing reads only what is new or changed. It is a cache: when the file is missing, damaged, of another version or
/// language, or changed by another process, a listing is slower and otherwise the same.
///
/// Recall may be called from several threads at once.
class EntryStore {
public:
    /// Reads what is known of the packages found under `top`, in the application language of now.
    /// @param stop asked now and then; true ends the reading, and a Save before it changes anything
    EntryStore(const std::string& sourceID, const std::filesystem::path& top, std::function<bool()> stop);

    /// Fills what the definition of the package at `entry.path` says of it, when the package is as it was.
    bool Recall(CapsuleEntry& entry, PackageState& state) const;

    /// Writes what is known now. Empty entries are left out; so is a package that changed only just now, because
    /// another change could get the same file time.
    void Save(const std::vector<boost::shared_ptr<CapsuleEntry>>& entries,
              const std::vector<PackageState>& states) const;

private:
    std::string sourceID_;
    std::filesystem::path top_;
    std::filesystem::path file_;
    std::function<bool()> stop_;
    std::string content_;
    std::unordered_map<std::u8string_view, std::string_view> records_; ///< into `content_`, by path
    orvcore::FileTime settled_;                                        ///< packages changed before this can be trusted
    bool isUsed_ = true;
    mutable std::atomic<std::size_t> recalled_ = 0;
};

} // namespace orvcapsule::detail
