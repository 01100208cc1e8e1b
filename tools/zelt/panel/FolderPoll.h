#pragma once

#include <tools/zelt/panel/Catalogue.h>
#include <tools/zelt/support/Browser.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace zelt {

/// Looks at folders again and again, on a thread of its own that takes a tenth of one processor at the most, and tells
/// what differs from the catalogue. It asks the file system alone, so that it serves for network folders too, of which
/// systems send no news.
class FolderPoll {
public:
    /// The changed packages by folder; none when something in the cloud libraries has changed. Called on the poll's
    /// thread.
    using OnChange = std::function<void(const std::map<std::string, std::vector<std::string>>&)>;

    FolderPoll(Places places, const Catalogue& catalogue, OnChange onChange);
    FolderPoll(const FolderPoll&) = delete;
    FolderPoll& operator=(const FolderPoll&) = delete;
    ~FolderPoll();

    /// Looks from now on, or no longer: while everything is listed, the catalogue is not whole.
    void SetOn(bool on);

private:
    using Files = std::map<std::string, FoundFile>;

    void Run();
    Files WalkFolders() const;
    Files WalkLibraries() const;
    void Tell(const Files& files);

    const Places places_;
    const Catalogue& catalogue_;
    const OnChange onChange_;
    std::map<std::string, std::pair<bool, FoundFile>> told_; // each state of a file is told once
    std::optional<Files> libraries_;                         // as they were found last
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    bool isOn_ = false;
    bool ends_ = false;
    std::thread thread_; // last: it uses the others
};

} // namespace zelt
