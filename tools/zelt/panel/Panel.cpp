#include <tools/zelt/panel/Panel.h>

#include <tools/zelt/output/Output.h>
#include <tools/zelt/panel/EntryRow.h>

#include <orvcore/files/Paths.h>
#include <orvcore/host/Application.h>
#include <orvcore/tasks/MainThread.h>
#include <package/PackageNames.h>
#include <sources/SourceNames.h>

#include <algorithm>
#include <iterator>

// Threads. The main thread runs everything that asks the manager, and all of its callbacks. The watchers' threads and
// the server's only queue calls for it, or read: the catalogue and the events lock themselves, and `mutex_` guards the
// state that both sides look at. Calls that are queued refer to this object, which is why its end stops them all.
//
// Changes of folders. What a watcher tells is gathered in `changed_` and waits while everything is listed, because a
// relisting and a full listing would mix in the catalogue; the end of the listing looks at it again. A full listing
// reads what the folders are by then, so it forgets the changes that came before it. After a cancel changes wait for
// the user's next refresh.

namespace zelt {

namespace {

using orvcapsule::GraphicSourceManager;

// Offered besides those that are met.
const std::set<std::string> kLanguages = {"de_DE", "en_US", "es_ES", "fr_FR", "it_IT",
                                          "ja_JP", "ko_KR", "pt_BR", "ru_RU", "zh_CN"};
// Beyond so many changed folders one listing of everything costs less.
constexpr std::size_t kMostFolders = 20;

} // namespace

Panel::Panel(Browser& browser, std::string session, const std::string& stock)
    : browser_(browser)
    , session_(std::move(session))
    , catalogue_(browser.GetPlaces().folders)
    , stock_(stock.empty() ? nullptr : std::make_unique<StockShelf>(stock))
{
    state_.languages = kLanguages;
    state_.languages.insert(orvcore::Application::GetLanguage());
    GraphicSourceManager& manager = browser_.GetManager();
    manager.SetLocalRequestEntriesFoundCallback(std::make_shared<GraphicSourceManager::EntriesFoundCallback>(
        [this](const Entries& entries) { catalogue_.Put(entries); }));
    manager.SetLocalRequestCallback(std::make_shared<GraphicSourceManager::RequestCallback>(
        [this](GraphicSourceManager::ResultMap& /*results*/, int /*first*/, int /*total*/) { OnListed(); }));
    manager.SetLocalDirectoryRequestCallback(std::make_shared<GraphicSourceManager::DirectoryCallback>(
        [this](const Entries& entries, const orvcore::UTF8String& folder, bool /*last*/) {
            catalogue_.PutFolder(std::string(orvcore::AsNarrow(folder)), entries);
        }));
    orvappsupport::SetProgressObserver([this](const orvappsupport::ProgressReport& report) { OnProgress(report); });
    Watch();
}

Panel::~Panel()
{
    watchers_.clear();
    orvappsupport::SetProgressObserver(nullptr);
    GraphicSourceManager& manager = browser_.GetManager();
    manager.Abort();
    manager.SetLocalRequestEntriesFoundCallback(nullptr);
    manager.SetLocalRequestCallback(nullptr);
    manager.SetLocalDirectoryRequestCallback(nullptr);
    orvcore::StopMainThreadCalls(); // calls that wait refer to this object
}

void Panel::Watch()
{
    using orvcore::FolderWatcher;
    const Places& places = browser_.GetPlaces();
    for (const std::string& folder : places.folders) {
        FolderWatcher::Settings settings;
        settings.folder = ToPath(folder);
        settings.withSubFolders = !places.isShallow;
        settings.extension = orvcore::PathFromUTF8(orvcapsule::kCapsuleExtn);
        watchers_.push_back(std::make_unique<FolderWatcher>(settings, [this](const auto& changes) {
            orvcore::AsyncCallFromMainThread([this, changes] {
                for (const FolderWatcher::Change& change : changes) {
                    auto& files = changed_[ToText(change.folder)];
                    std::transform(change.files.begin(), change.files.end(), std::back_inserter(files), &ToText);
                }
                RefreshChanged();
            });
        }));
    }
    if (!places.libraries.empty()) {
        FolderWatcher::Settings settings;
        settings.folder = ToPath(places.libraries);
        watchers_.push_back(std::make_unique<FolderWatcher>(settings, [this](const auto& /*changes*/) {
            orvcore::AsyncCallFromMainThread([this] {
                areLibrariesChanged_ = true;
                RefreshChanged();
            });
        }));
    }
}

void Panel::Refresh()
{
    changed_.clear(); // it reads what they are now
    areLibrariesChanged_ = false;
    catalogue_.BeginListing();
    ChangeState([](State& state) {
        state.isListing = true;
        state.isCancelled = false;
        state.fraction = 0;
        state.item = 0;
    });
    browser_.GetManager().RequestDefaultGraphicSet({}, true);
}

void Panel::Cancel()
{
    browser_.GetManager().Abort();
    ChangeState([](State& state) { state.isCancelled = std::exchange(state.isListing, false) || state.isCancelled; });
}

void Panel::SetLanguage(const std::string& language)
{
    if (language != orvcore::Application::GetLanguage()) {
        orvcore::Application::SetLanguage(language);
        ChangeState([&](State& state) { state.languages.insert(language); });
        Refresh();
    }
}

void Panel::RefreshFolder(const std::string& folder, const std::vector<std::string>& files)
{
    std::vector<orvcore::UTF8String> changed;
    changed.reserve(files.size());
    for (const std::string& file : files) {
        changed.emplace_back(orvcore::AsUTF8(file));
    }
    browser_.GetManager().LocalDirectoryChanged(orvcapsule::kLocalSourceID,
                                                orvcore::UTF8String(orvcore::AsUTF8(folder)), changed);
}

void Panel::OnListed()
{
    catalogue_.EndListing();
    auto problems = FindProblems();
    ChangeState([&](State& state) {
        state.isListing = false;
        state.problems = std::move(problems);
    });
    RefreshChanged();
}

void Panel::OnProgress(const orvappsupport::ProgressReport& report)
{
    ChangeState([&](State& state) { // the first item is the request's own; its sources add others
        state.item = state.item == 0 ? report.itemID : state.item;
        state.fraction = state.isListing && report.itemID == state.item ? report.GetFraction() : state.fraction;
    });
}

void Panel::RefreshChanged()
{
    {
        const std::lock_guard lock(mutex_);
        if (state_.isListing || state_.isCancelled) { // the listing's end asks again
            return;
        }
    }
    if (areLibrariesChanged_ || changed_.size() > kMostFolders) {
        Refresh();
        return;
    }
    for (const auto& [folder, files] : std::exchange(changed_, {})) {
        RefreshFolder(folder, files);
    }
}

std::vector<std::string> Panel::FindProblems() const
{
    std::vector<std::string> problems;
    for (const orvcapsule::FolderFailure& failure : browser_.GetFolderFailures()) {
        problems.push_back(std::string(orvcore::AsNarrow(failure.folder)) + ": " + failure.reason.message());
    }
    for (const lumolibmanager::LeftOut& left : browser_.GetLeftOut()) {
        problems.push_back(std::string(orvcore::AsNarrow(left.place)) + ": " + left.reason);
    }
    return problems;
}

template <class Change>
void Panel::ChangeState(Change&& change)
{
    const std::lock_guard lock(mutex_);
    change(state_);
}

void Panel::Tell()
{
    if (std::string failure = browser_.TakeFailure(); !failure.empty()) {
        ChangeState([&](State& state) { state.problems.push_back(std::move(failure)); });
    }
    if (stock_) {
        stock_->TellVideos();
    }
    events_.Tell(StateAsJSON());
}

std::string Panel::StateAsJSON() const
{
    orvcore::serialization::JSONTextWriter writer;
    const std::lock_guard lock(mutex_);
    writer.BeginObject();
    writer.Key("session");
    writer.String(session_);
    writer.Key("revision");
    writer.UInt(catalogue_.Revision());
    writer.Key("listing");
    writer.Bool(state_.isListing);
    writer.Key("cancelled");
    writer.Bool(state_.isCancelled);
    writer.Key("hasStock");
    writer.Bool(stock_ != nullptr);
    writer.Key("fraction");
    writer.Double(state_.fraction);
    writer.Key("language");
    writer.String(std::string_view(orvcore::Application::GetLanguage()));
    WriteList(writer, "languages", state_.languages);
    WriteList(writer, "problems", state_.problems);
    WriteList(writer, "places", browser_.GetPlaces().folders);
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

} // namespace zelt
