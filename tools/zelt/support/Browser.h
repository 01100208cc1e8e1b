#pragma once

#include <tools/zelt/support/Interrupt.h>
#include <tools/zelt/support/TempFolder.h>

#include <lumolibmanager/LumoLibManager.h>
#include <manager/GraphicSourceManager.h>
#include <sources/GraphicSource.h>
#include <stock/StockCapsuleEntry.h>
#include <stock/StockSource.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace zelt {

/// A small host: the library's manager with a local source and one of cloud libraries, or with the stock source alone,
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

    /// @param folders    the first is listed with all below it (empty: none), the others without sub-folders
    /// @param libraries  the folder that holds the cloud libraries; empty: none
    Browser(const std::vector<std::string>& folders, const std::string& libraries);
    /// The stock service. @param filter  one of the stock source's filter values
    Browser(std::shared_ptr<orvcapsule::ClientStockConnection> connection, const orvcore::UTF8String& filter);
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;
    ~Browser();

    /// All templates, by name. Fills the search index.
    /// @param progressive  the library reports how far it is
    Entries List(bool progressive);
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
    std::shared_ptr<Failure> failure_;
    std::shared_ptr<orvcapsule::GraphicSourceManager> manager_;
};

} // namespace zelt
