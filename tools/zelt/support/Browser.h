#pragma once

#include <tools/zelt/support/Interrupt.h>
#include <tools/zelt/support/TempFolder.h>

#include <lumolibmanager/LumoLibManager.h>
#include <manager/GraphicSourceManager.h>
#include <sources/LocalGraphicsSource.h>
#include <stock/StockCapsuleEntry.h>
#include <stock/StockSource.h>

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace zelt {

/// Where templates are looked for. Paths are full.
struct Places {
    std::vector<std::string> folders;
    bool isShallow = false; ///< the folders without what lies in their sub-folders
    std::string libraries;  ///< the folder that holds the cloud libraries; empty: none
    bool noPreviews = false;
};

/// A small host: the library's manager with local sources and one of cloud libraries, or with the stock source alone,
/// on this thread as the main thread. Every operation waits for its answer, runs the main thread's calls meanwhile, and
/// is cancelled when the user interrupts.
///
/// The search index is a private file that is deleted with this object. Operations throw Cancelled, or what ended a
/// background task.
///
/// The destructor ends the library's executors for good: a program can only use one object.
class Browser {
public:
    using Entries = orvcapsule::GraphicSourceManager::EntryList;
    using Texts = std::set<orvcore::UTF8String>;

    explicit Browser(const Places& places);
    /// The stock service. @param filter  one of the stock source's filter values
    Browser(std::shared_ptr<orvcapsule::ClientStockConnection> connection, const orvcore::UTF8String& filter);
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;
    ~Browser();

    /// All templates, by name; one that lies in several of the places once. Fills the search index.
    /// @param progressive  the library reports how far it is
    Entries List(bool progressive);
    /// The places, as they were given.
    const Places& GetPlaces() const noexcept
    {
        return places_;
    }
    /// Tells whether the user has interrupted.
    const InterruptWatch& GetInterrupt() const noexcept
    {
        return interrupt_;
    }
    /// @name For a host that sets callbacks and makes requests by itself
    /// @{
    orvcapsule::GraphicSourceManager& GetManager() const noexcept
    {
        return *manager_;
    }
    /// Runs the main thread's calls, those too that come within this time.
    void RunCalls(std::chrono::milliseconds time);
    /// What ended a background task since this was asked last, in words; empty when nothing did.
    std::string TakeFailure();
    /// @}
    /// The folders that could not be listed, and why.
    std::vector<orvcapsule::FolderFailure> GetFolderFailures() const;
    /// What of the cloud libraries was not listed, and why.
    std::vector<lumolibmanager::LeftOut> GetLeftOut() const;
    /// The paths of the listed templates that every term finds.
    Texts Search(const std::vector<std::string>& terms);
    /// Suggestions for what a user has typed.
    Texts FindTags(const std::string& prefix);

    struct StockFound {
        std::vector<boost::shared_ptr<orvcapsule::StockCapsuleEntry>> entries; ///< the first thousand at most
        std::size_t total = 0;
    };
    /// The stock templates that every term finds. @throws std::runtime_error  that says why a page did not arrive
    StockFound SearchStock(const std::vector<std::string>& terms);

private:
    struct Failure;
    using SetCallback = void (orvcapsule::GraphicSourceManager::*)(
        const std::shared_ptr<orvcapsule::GraphicSourceManager::TextSetCallback>&);

    void CatchFailures();
    Texts RequestTexts(const std::function<void()>& request, SetCallback setCallback);
    void Await(const bool& answered);

    InterruptWatch interrupt_; // goes last: an interrupt meanwhile must not leave the folder behind
    TempFolder folder_;
    const Places places_;
    std::shared_ptr<Failure> failure_;
    std::vector<std::shared_ptr<orvcapsule::LocalGraphicsSource>> sources_;
    std::shared_ptr<orvcapsule::GraphicSourceManager> manager_;
};

} // namespace zelt
