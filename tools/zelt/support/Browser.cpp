#include <tools/zelt/support/Browser.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/ListingProgress.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/IndexFile.h>

#include <lumolibmanager/FolderLibManager.h>
#include <orvcore/files/Paths.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/MainThread.h>
#include <sources/LumoLibrariesSource.h>
#include <sources/PreviewLimit.h>
#include <sources/SourceNames.h>
#include <tools/support/Console.h>

#include <boost/pointer_cast.hpp>

#include <algorithm>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <tuple>
#include <utility>

// A host in small: this thread is the main thread, and each operation pumps it until its answer has come. Callbacks run
// in that pump, inside the operation, so they may refer to its local variables; they are taken away before it returns,
// because a late delivery would write to variables that are gone. Where it throws instead, Shutdown drops what is still
// to come.

namespace zelt {

using orvcapsule::GraphicSourceManager;

// What went wrong first on a thread of the library's, but for the folders of a listing: those are asked for.
struct Browser::Failure {
    std::mutex mutex;
    std::exception_ptr first;

    void Set(const std::exception_ptr& failure)
    {
        try {
            std::rethrow_exception(failure);
        } catch (const orvcapsule::unlisted_folders_exception&) {
            return;
        } catch (...) {
            const std::lock_guard lock(mutex);
            first = first ? first : failure;
        }
    }
    void Throw()
    {
        const std::lock_guard lock(mutex);
        if (first) {
            std::rethrow_exception(std::exchange(first, nullptr));
        }
    }
};

namespace {

constexpr std::size_t kMostStockResults = 1000; // nothing behind them is asked for

using Source = orvcapsule::LocalGraphicsSource;

// A folder with all below it is a source's root; those without their sub-folders are one source's custom directories.
std::vector<std::shared_ptr<Source>> MakeSources(const Places& places)
{
    std::vector<std::shared_ptr<Source>> sources;
    std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>> custom;
    for (const std::string& folder : places.folders) {
        if (places.isShallow) {
            custom.emplace_back(orvcore::ToUTF8(folder), orvcore::ToUTF8(folder));
        } else {
            sources.push_back(std::make_shared<Source>(orvcore::PathToUTF16(ToPath(folder)), custom));
        }
    }
    if (!custom.empty()) {
        sources.push_back(std::make_shared<Source>(orvcore::UTF16String(), custom));
    }
    return sources;
}

std::vector<orvcore::UTF16String> ToWide(const std::vector<std::string>& terms)
{
    std::vector<orvcore::UTF16String> wide;
    wide.reserve(terms.size());
    for (const std::string& term : terms) {
        wide.push_back(orvcore::ToUTF16(term));
    }
    return wide;
}

} // namespace

Browser::Browser(const Places& places)
    : places_(places)
    , failure_(std::make_shared<Failure>())
    , sources_(MakeSources(places))
{
    const std::filesystem::path index = folder_.Path() / "index";
    CheckIndexFile(ToText(index), false);
    CatchFailures();
    orvcapsule::SetPreviewsInListings(!places.noPreviews);
    manager_ = std::make_shared<GraphicSourceManager>(orvcore::PathToUTF16(index));
    for (const auto& source : sources_) {
        manager_->AddGraphicSource(source);
    }
    if (!places.libraries.empty()) {
        lumolibmanager::SetLumoLibManager(std::make_shared<lumolibmanager::FolderLibManager>(ToPath(places.libraries)));
        manager_->AddGraphicSource(std::make_shared<orvcapsule::LumoLibrariesSource>(false));
    }
}

Browser::Browser(std::shared_ptr<orvcapsule::ClientStockConnection> connection, const orvcore::UTF8String& filter)
    : failure_(std::make_shared<Failure>())
    , manager_(std::make_shared<GraphicSourceManager>(u""))
{
    CatchFailures();
    manager_->AddGraphicSource(
        std::make_shared<orvcapsule::StockSource>(std::move(connection), orvcapsule::TemplateType::MotionGraphics));
    manager_->SetSearchFilterType(filter);
}

void Browser::CatchFailures()
{
    orvcore::SetTaskExceptionHandler([failure = failure_](const std::exception_ptr& what) { failure->Set(what); });
}

Browser::~Browser()
{
    // In this order: no request goes on, nothing keeps the manager, no task is left that may use the index in the
    // folder, no call is left that holds entries. Then the members go, the folder among them.
    manager_->Shutdown();
    manager_.reset();
    // A task in progress still uses the index until its next check; the folder can go only when it has ended.
    orvcore::ShutdownExecutors();
    orvcore::StopMainThreadCalls();
    orvcore::SetTaskExceptionHandler(nullptr);
}

Browser::Entries Browser::List(bool progressive)
{
    const bool onTerminal = orvtools::IsTerminal(orvtools::StandardStream::Error);
    const ListingProgress progress(progressive && !onTerminal);
    bool answered = false;
    Entries entries;
    manager_->SetLocalRequestCallback(std::make_shared<GraphicSourceManager::RequestCallback>(
        [&](GraphicSourceManager::ResultMap& results, int /*first*/, int /*total*/) {
            // Two of the places may hold one folder; elements of libraries are told apart although they may share a
            // package.
            std::set<std::tuple<orvcore::UTF8String, std::string, orvcore::UTF8String>> known;
            for (auto& [position, entry] : results) {
                if (known.emplace(entry->path, entry->GetLibraryID(), entry->lumoElementID).second) {
                    entries.push_back(std::move(entry));
                }
            }
            answered = true;
        }));
    manager_->RequestDefaultGraphicSet({}, progressive || onTerminal);
    Await(answered);
    manager_->SetLocalRequestCallback(nullptr);
    return entries;
}

std::vector<orvcapsule::FolderFailure> Browser::GetFolderFailures() const
{
    std::vector<orvcapsule::FolderFailure> all;
    for (const auto& source : sources_) {
        const auto failures = source->GetFolderFailures();
        all.insert(all.end(), failures.begin(), failures.end());
    }
    return all;
}

std::vector<lumolibmanager::LeftOut> Browser::GetLeftOut() const
{
    return manager_->FindGraphicSource(orvcapsule::kLumoLibrariesSourceID)
               ? lumolibmanager::GetLumoLibManager()->GetLeftOut()
               : std::vector<lumolibmanager::LeftOut>();
}

Browser::Texts Browser::Search(const std::vector<std::string>& terms)
{
    return RequestTexts([&] { manager_->RequestGraphics(ToWide(terms)); },
                        &GraphicSourceManager::SetDatabaseRequestCallback);
}

Browser::Texts Browser::FindTags(const std::string& prefix)
{
    return RequestTexts([&] { manager_->RequestSimilarTags(orvcore::ToUTF16(prefix)); },
                        &GraphicSourceManager::SetDatabaseTagRequestCallback);
}

Browser::StockFound Browser::SearchStock(const std::vector<std::string>& terms)
{
    Progress progress("searching");
    bool answered = false;
    StockFound found;
    std::string failure;
    manager_->SetStockRequestCallback(std::make_shared<GraphicSourceManager::RequestCallback>(
        [&](GraphicSourceManager::ResultMap& page, int /*first*/, int total) {
            for (const auto& [position, entry] : page) {
                found.entries.push_back(boost::dynamic_pointer_cast<orvcapsule::StockCapsuleEntry>(entry));
            }
            found.total = static_cast<std::size_t>(total);
            const std::size_t wanted = std::min(found.total, kMostStockResults);
            answered = page.empty() || found.entries.size() >= wanted;
            progress.Set(static_cast<double>(found.entries.size()) /
                         static_cast<double>(std::max(wanted, std::size_t{1})));
        }));
    manager_->SetStockFailureCallback(
        std::make_shared<GraphicSourceManager::StockFailureCallback>([&](const orvcapsule::StockSearchFailure& what) {
            failure = orvcore::ToNarrow(what.message);
            answered = true;
        }));
    manager_->RequestGraphics(ToWide(terms));
    Await(answered);
    manager_->SetStockRequestCallback(nullptr);
    manager_->SetStockFailureCallback(nullptr);
    if (!failure.empty()) {
        throw std::runtime_error(failure);
    }
    return found;
}

Browser::Texts Browser::RequestTexts(const std::function<void()>& request, SetCallback setCallback)
{
    bool answered = false;
    Texts texts;
    const auto callback = std::make_shared<GraphicSourceManager::TextSetCallback>([&](Texts found) {
        texts = std::move(found);
        answered = true;
    });
    (manager_.get()->*setCallback)(callback);
    request();
    Await(answered);
    (manager_.get()->*setCallback)(nullptr);
    return texts;
}

void Browser::RunCalls(std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    for (auto now = end - time; now < end; now = std::chrono::steady_clock::now()) {
        orvcore::WaitForMainThreadCalls(std::chrono::ceil<std::chrono::milliseconds>(end - now));
        orvcore::RunMainThreadCalls(time);
    }
}

std::string Browser::TakeFailure()
{
    try {
        failure_->Throw();
        return "";
    } catch (const std::exception& error) {
        return error.what();
    }
}

void Browser::Await(const bool& answered)
{
    // A signal cannot wake the wait, so it is asked for now and then.
    constexpr std::chrono::milliseconds kInterruptInterval(50);
    try {
        while (!answered) {
            interrupt_.Check();
            orvcore::WaitForMainThreadCalls(kInterruptInterval);
            orvcore::RunMainThreadCalls();
            // A task that ended with an exception answers nothing any more, so waiting on would be for ever.
            failure_->Throw();
        }
    } catch (...) {
        // An aborted request delivers nothing more: its callback refers to variables of the caller.
        manager_->Abort();
        throw;
    }
}

} // namespace zelt
