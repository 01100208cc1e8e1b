#pragma once

#include <tools/zelt/panel/Catalogue.h>
#include <tools/zelt/panel/Events.h>
#include <tools/zelt/panel/StockShelf.h>
#include <tools/zelt/support/Browser.h>

#include <orvappsupport/Progress.h>
#include <orvcore/files/FolderWatcher.h>

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace zelt {

/// What the browse panel shows, as a host of the library that has windows would hold it: it asks the manager on the
/// main thread, which runs the answers, and threads that serve the page read the outcome.
class Panel {
public:
    /// @param session  tells this run of the program from others
    /// @param stock  the URL of the stock service; empty: none
    Panel(Browser& browser, std::string session, const std::string& stock);
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;
    ~Panel();

    /// @name Main thread
    /// @{
    /// Lists everything again.
    void Refresh();
    void Cancel();
    /// Names of templates come in this language from now on.
    void SetLanguage(const std::string& language);
    /// Lists again a folder whose packages have changed.
    void RefreshFolder(const std::string& folder, const std::vector<std::string>& files);
    /// Tells the pages what has changed since it was called last, and hands out videos of the stock service.
    void Tell();
    /// @}

    /// @name Any thread
    /// @{
    Catalogue& Templates() noexcept
    {
        return catalogue_;
    }
    Events& Pages() noexcept
    {
        return events_;
    }
    /// Null without a stock service.
    StockShelf* Stock() noexcept
    {
        return stock_.get();
    }
    const Browser& Host() const noexcept
    {
        return browser_;
    }
    /// @}

private:
    struct State {
        bool isListing = false;
        bool isCancelled = false;
        double fraction = 0;
        std::uint64_t item = 0; // of the progress that is shown
        std::set<std::string> languages;
        std::vector<std::string> problems;

        bool operator==(const State&) const = default;
    };

    void OnListed();
    void OnProgress(const orvappsupport::ProgressReport& report);
    void Watch();
    void RefreshChanged();
    template <class Change>
    void ChangeState(Change&& change);
    std::vector<std::string> FindProblems() const;
    std::string StateAsJSON() const; // everything but the templates

    Browser& browser_;
    const std::string session_;
    Catalogue catalogue_;
    Events events_;
    mutable std::mutex mutex_;
    State state_;
    std::unique_ptr<StockShelf> stock_;
    std::map<std::string, std::vector<std::string>> changed_; // folders and their files, to be listed again
    bool areLibrariesChanged_ = false;
    std::vector<std::unique_ptr<orvcore::FolderWatcher>> watchers_; // last: their threads use the others
};

} // namespace zelt
