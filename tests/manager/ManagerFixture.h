#pragma once

#include <tests/support/TempFolder.h>

#include <manager/GraphicSourceManager.h>
#include <orvappsupport/Progress.h>
#include <orvcore/files/Paths.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/MainThread.h>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <stdexcept>

namespace test {

using orvcapsule::GraphicSourceManager;
using Manager = std::shared_ptr<GraphicSourceManager>;

/// A number that grows on one thread while another waits for it. (The C++ library of the Windows cross-build loses
/// wake-ups of `std::atomic::wait`.)
class Tally {
public:
    void Add()
    {
        {
            const std::lock_guard lock(mutex_);
            ++count_;
        }
        grown_.notify_all();
    }
    std::size_t Get() const
    {
        const std::lock_guard lock(mutex_);
        return count_;
    }
    void AwaitAtLeast(std::size_t count) const
    {
        std::unique_lock lock(mutex_);
        ASSERT_TRUE(grown_.wait_for(lock, std::chrono::minutes(2), [&] { return count_ >= count; }));
    }

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable grown_;
    std::size_t count_ = 0;
};

/// A local source that lists what it is given and remembers what it was asked.
class FakeSource : public orvcapsule::ILocalGraphicSource {
public:
    using Cancel = boost::shared_ptr<orvcapsule::CheckCancel>;

    explicit FakeSource(const std::string& sourceID, const std::vector<std::u16string>& names = {})
        : id(sourceID)
    {
        for (const std::u16string& name : names) {
            entries.push_back(boost::make_shared<orvcapsule::CapsuleEntry>());
            entries.back()->name = name;
            entries.back()->path = u8"/" + orvcore::ToUTF8(name) + u8".zelt";
            entries.back()->sourcePath = {id};
        }
    }
    ~FakeSource() override
    {
        destroyed.set_value();
    }

    void Initialize() override
    {
        ++initialized;
    }
    void Terminate() override
    {
        onTerminate();
    }
    std::string GetSourceID() const override
    {
        return id;
    }
    void GetFilter(GraphicFilterID& filter) override
    {
        filter.sourceID = id;
    }
    std::set<orvcore::UTF8String> GetDirectories() const override
    {
        return {u8"/" + orvcore::UTF8String(id.begin(), id.end())};
    }
    orvcore::UTF8String GetThumbnailPath(const GraphicSourceManager::EntryPtr& entry, const Cancel&) const override
    {
        return entry->path + u8".png";
    }
    void SetFilterType(const orvcore::UTF8String& type) override
    {
        filterType = type;
    }
    float GetProgressWeight() const override
    {
        return 2.0F;
    }
    void SearchDB(const std::vector<std::u16string>& terms, std::set<std::u16string>& matches) override
    {
        matches.insert(terms.begin(), terms.end());
        onSearch();
    }
    void Search(const std::vector<std::u16string>&, GraphicSourceManager::EntryList& results, int, int, int& total,
                Cancel cancel) const override
    {
        onList(u"");
        for (const auto& entry : entries) {
            if (cancel->GetAbort()) {
                results.clear();
                break;
            }
            if (announces && cancel->onEntryFound) {
                cancel->onEntryFound(entry);
            }
            if (entry) {
                onEntry(*entry);
            }
            results.push_back(entry);
            listed.Add();
        }
        total = static_cast<int>(results.size());
    }
    void SearchByDirectory(OnDirectory onDirectory, std::vector<std::u16string>& folders, Cancel cancel) override
    {
        directories = folders;
        SearchDirectory(onDirectory, u"", cancel);
    }
    void SearchDirectory(OnDirectory onDirectory, const std::u16string& directory, Cancel cancel) override
    {
        onList(directory);
        GraphicSourceManager::EntryList results;
        int total = 0;
        try {
            Search({}, results, 0, -1, total, cancel);
        } catch (...) {
            onDirectory(results, directory, true);
            throw;
        }
        onDirectory(results, directory, true);
    }

    const std::string id;
    GraphicSourceManager::EntryList entries;
    std::function<void()> onTerminate = [] {};
    std::function<void()> onSearch = [] {};
    std::function<void(const std::u16string&)> onList = [](const std::u16string&) {};
    std::function<void(const orvcapsule::CapsuleEntry&)> onEntry = [](const auto&) {};
    bool announces = false;
    int initialized = 0;
    orvcore::UTF8String filterType;
    std::vector<std::u16string> directories;
    mutable Tally listed; ///< entries in all listings so far
    std::promise<void> destroyed;
};

/// Holds the executor at one point of a task until it is opened; later passes go through.
class Gate {
public:
    /// For the task.
    void Pass()
    {
        if (!reached_.exchange(true)) {
            begun_.set_value();
        }
        opened_.wait();
    }
    /// For the test: waits until the task is there.
    void AwaitTask()
    {
        ASSERT_EQ(begun_.get_future().wait_for(std::chrono::minutes(2)), std::future_status::ready);
    }
    void Open()
    {
        open_.set_value();
    }

private:
    std::atomic<bool> reached_ = false;
    std::promise<void> begun_;
    std::promise<void> open_;
    std::shared_future<void> opened_ = open_.get_future().share();
};

/// Counts, for a scope, what reaches the host's handler of exceptions.
class FailuresTold {
public:
    FailuresTold()
    {
        orvcore::SetTaskExceptionHandler([count = count_](const std::exception_ptr&) { count->Add(); });
    }
    FailuresTold(const FailuresTold&) = delete;
    FailuresTold& operator=(const FailuresTold&) = delete;
    ~FailuresTold()
    {
        orvcore::SetTaskExceptionHandler({});
    }
    std::size_t Get() const
    {
        return count_->Get();
    }

private:
    std::shared_ptr<Tally> count_ = std::make_shared<Tally>();
};

/// Waits for what happens on another thread; far longer than it can take.
inline void Await(std::future<void> event)
{
    ASSERT_EQ(event.wait_for(std::chrono::minutes(2)), std::future_status::ready);
}

/// Runs main-thread calls until `done`.
template <class Done>
void PumpUntil(Done done)
{
    while (!done()) {
        ASSERT_TRUE(orvcore::WaitForMainThreadCalls(std::chrono::minutes(2)));
        orvcore::RunMainThreadCalls();
    }
}

/// Installs a progress observer for a scope.
class ProgressObserver {
public:
    explicit ProgressObserver(orvappsupport::ProgressObserver observer)
    {
        orvappsupport::SetProgressObserver(std::move(observer));
    }
    ProgressObserver(const ProgressObserver&) = delete;
    ProgressObserver& operator=(const ProgressObserver&) = delete;
    ~ProgressObserver()
    {
        orvappsupport::SetProgressObserver({});
    }
};

/// A host with a manager in index mode that writes down what it is told.
class ManagerFixture : public testing::Test {
protected:
    ManagerFixture()
    {
        SetCallbacks(*manager);
    }
    ~ManagerFixture() override
    {
        manager->Shutdown();
        orvcore::RunMainThreadCalls();
    }

    void SetCallbacks(GraphicSourceManager& target)
    {
        target.SetLocalRequestCallback(local);
        target.SetStockRequestCallback(stock);
        target.SetLocalRequestPartialCompletionCallback(partial);
        target.SetLocalDirectoryRequestCallback(directory);
        target.SetDatabaseRequestCallback(database);
        target.SetDatabaseTagRequestCallback(tags);
    }
    std::shared_ptr<FakeSource> Add(const std::string& id, const std::vector<std::u16string>& names = {})
    {
        auto source = std::make_shared<FakeSource>(id, names);
        manager->AddGraphicSource(source);
        return source;
    }
    /// Until all requests made so far are answered: a relisting of an unknown source's folder comes last.
    void Flush()
    {
        manager->LocalDirectoryChanged("flush", u8"flush", {});
        PumpUntil([this] { return std::erase(told, "folder flush: last") == 1; });
    }
    std::string Joined(const GraphicSourceManager::EntryList& entries) const
    {
        std::string joined;
        for (const auto& entry : entries) {
            joined += " " + orvcore::ToNarrow(orvcore::ToUTF8(entry->name));
        }
        return joined;
    }
    void Tell(const char* what, const std::set<orvcore::UTF8String>& texts)
    {
        std::string joined = what;
        for (const orvcore::UTF8String& text : texts) {
            joined += " " + orvcore::ToNarrow(text);
        }
        told.push_back(joined);
    }

    TempFolder folder;
    Manager manager = std::make_shared<GraphicSourceManager>(orvcore::PathToUTF16(folder / "index.db"));
    std::vector<std::string> told;
    std::map<int, GraphicSourceManager::EntryPtr> results;

    using Request = GraphicSourceManager::RequestCallback;
    std::shared_ptr<Request> local = std::make_shared<Request>([this](auto& map, int first, int total) {
        results = std::move(map);
        GraphicSourceManager::EntryList entries;
        for (const auto& [position, entry] : results) {
            EXPECT_EQ(position, first + static_cast<int>(entries.size()));
            entries.push_back(entry);
        }
        told.push_back("all from " + std::to_string(first) + " of " + std::to_string(total) + ":" + Joined(entries));
    });
    std::shared_ptr<Request> stock = std::make_shared<Request>([this](auto&, int, int) { told.push_back("stock"); });
    std::shared_ptr<GraphicSourceManager::PartialCompletionCallback> partial =
        std::make_shared<GraphicSourceManager::PartialCompletionCallback>(
            [this](const auto& entries, int delivered, int expected, const std::string& id) {
                told.push_back(id + " " + std::to_string(delivered) + "/" + std::to_string(expected) + ":" +
                               Joined(entries));
            });
    std::shared_ptr<GraphicSourceManager::DirectoryCallback> directory =
        std::make_shared<GraphicSourceManager::DirectoryCallback>(
            [this](const auto& entries, const orvcore::UTF8String& path, bool last) {
                told.push_back("folder " + orvcore::ToNarrow(path) + ":" + Joined(entries) + (last ? " last" : ""));
            });
    using TextSet = GraphicSourceManager::TextSetCallback;
    std::shared_ptr<TextSet> database = std::make_shared<TextSet>([this](auto texts) { Tell("found", texts); });
    std::shared_ptr<TextSet> tags = std::make_shared<TextSet>([this](auto texts) { Tell("tags", texts); });
};

} // namespace test
