#include <tests/manager/ManagerFixture.h>

#include <sources/SearchIndex.h>

#include <algorithm>

namespace {

using namespace test;
using orvcapsule::CapsuleEntry;
using testing::ElementsAre;
using testing::IsEmpty;
using SortFunction = GraphicSourceManager::SortFunction;

class ManagerTest : public ManagerFixture {};

// A source that is not a local one.
class OtherSource : public orvcapsule::IGraphicSource {
public:
    std::string GetSourceID() const override
    {
        return "other";
    }
    void GetFilter(GraphicFilterID&) override
    {
        throw std::runtime_error("no filter");
    }
    orvcore::UTF8String GetThumbnailPath(const GraphicSourceManager::EntryPtr&,
                                         const FakeSource::Cancel&) const override
    {
        return {};
    }
};

TEST_F(ManagerTest, KnowsItsSourcesUntilShutdown)
{
    const auto first = Add("same", {u"a"});
    const auto second = Add("same");
    const auto third = Add("third");
    manager->AddGraphicSource(nullptr);
    EXPECT_EQ(first->initialized, 1);
    EXPECT_EQ(manager->FindGraphicSource("same"), first);
    EXPECT_EQ(manager->FindGraphicSource("Same"), nullptr);
    manager->SetSearchFilterType(u8"true");
    EXPECT_EQ(third->filterType, u8"true");
    EXPECT_EQ(manager->GetLocalDirectories(), (std::set<orvcore::UTF8String>{u8"/same", u8"/third"}));

    const auto aborted = boost::make_shared<orvcapsule::CheckCancel>();
    aborted->Abort();
    const auto stranger = boost::make_shared<CapsuleEntry>();
    for (const auto& [entry, token, path] : {std::tuple(first->entries[0], FakeSource::Cancel(), u8"/a.zelt.png"),
                                             {first->entries[0], aborted, u8""},
                                             {stranger, nullptr, u8""},
                                             {nullptr, nullptr, u8""}}) {
        EXPECT_EQ(manager->GetThumbnailPath(entry, token), path);
        EXPECT_EQ(manager->GetThumbnail(entry, token).path, path);
    }

    std::vector<orvcapsule::IGraphicSource::GraphicFilterID> filters(1);
    manager->GetFilterList(filters);
    ASSERT_EQ(filters.size(), 4U);
    EXPECT_EQ(filters[3].sourceID, "third");
    manager->AddGraphicSource(std::make_shared<OtherSource>());
    EXPECT_THROW(manager->GetFilterList(filters), std::runtime_error);
    EXPECT_EQ(filters.size(), 7U) << "a filter that could not be told is not in the list";

    std::vector<int> order;
    first->onTerminate = [&] { order.push_back(1); };
    second->onTerminate = [&] { order.push_back(2); };
    third->onTerminate = [&] { order.push_back(3); };
    manager->Shutdown();
    manager->Shutdown();
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
    filters.clear();
    manager->GetFilterList(filters);
    EXPECT_THAT(filters, IsEmpty());
    EXPECT_EQ(manager->FindGraphicSource("same"), nullptr);
}

TEST_F(ManagerTest, ShutdownKeepsTwoCallbacksAndPassesWhatASourceThrows)
{
    std::string ended;
    for (const char* id : {"a", "b", "c", "d"}) {
        Add(id)->onTerminate = [&ended, id] {
            ended += id;
            if (std::string("bc").find(id) != std::string::npos) {
                throw std::runtime_error("cannot end");
            }
        };
    }
    EXPECT_THROW(manager->Shutdown(), std::runtime_error);
    EXPECT_EQ(ended, "ab");
    EXPECT_THROW(manager->Shutdown(), std::runtime_error);
    manager->Shutdown();
    EXPECT_EQ(ended, "abcd");
    EXPECT_EQ(partial.use_count(), 2);
    EXPECT_EQ(directory.use_count(), 2);
    EXPECT_EQ(local.use_count() + stock.use_count() + database.use_count() + tags.use_count(), 4);
    manager->SetDatabaseRequestCallback(database);
    EXPECT_EQ(database.use_count(), 1) << "refused from the shutdown on";
}

TEST_F(ManagerTest, InStockModeNothingLocalHappens)
{
    auto stockManager = std::make_shared<GraphicSourceManager>(u"");
    SetCallbacks(*stockManager);
    EXPECT_EQ(database.use_count() + tags.use_count(), 4) << "held by the fixture and its own manager only";
    auto source = std::make_shared<FakeSource>("graphicsource.Stock", std::vector<std::u16string>{u"a"});
    std::future<void> destroyed = source->destroyed.get_future();
    std::atomic<int> asked = 0;
    source->onList = [&asked](const auto&) { ++asked; };
    source->onSearch = [&asked] { ++asked; };
    stockManager->AddGraphicSource(std::move(source));
    stockManager->RequestGraphics({u"a"});
    stockManager->RequestDefaultGraphicSet({}, true);
    stockManager->RequestSimilarTags(u"a");
    stockManager->LocalDirectoryChanged({}, true);
    stockManager->LocalDirectoryChanged("graphicsource.Stock", u8"/", {});
    stockManager->UpdateCustomDirectoryList({{u8"name", u8"/"}});
    EXPECT_THAT(stockManager->GetLocalDirectories(), IsEmpty());
    stockManager.reset();
    Await(std::move(destroyed)); // the last queued request let go of the manager
    orvcore::RunMainThreadCalls();
    EXPECT_THAT(told, IsEmpty());
    EXPECT_EQ(asked, 0);
}

TEST_F(ManagerTest, ListsSourceBySourceAndThenEverythingInOrder)
{
    const auto first = Add("first", {u"b", u"abc", u"Z"});
    first->entries.push_back(nullptr);
    const auto failing = Add("failing", {u"lost"});
    failing->onList = [](const auto&) { throw std::runtime_error("unreadable"); };
    const auto last = Add("last", {u"ab", u"b"});
    manager->AddGraphicSource(std::make_shared<OtherSource>());
    const FailuresTold failures;

    const auto byName =
        std::make_shared<SortFunction>([](const auto& one, const auto& other) { return *one < *other; });
    const auto backwards =
        std::make_shared<SortFunction>([](const auto& one, const auto& other) { return *other < *one; });
    const auto broken =
        std::make_shared<SortFunction>([](const auto&, const auto&) -> bool { throw std::runtime_error("no order"); });
    const struct {
        std::optional<std::shared_ptr<SortFunction>> sort;
        const char* all;
    } cases[] = {
        {std::nullopt, "all from 0 of 5: Z ab abc b b"},
        {nullptr, "all from 0 of 5: b abc Z ab b"},
        {backwards, "all from 0 of 5: b b abc ab Z"},
        {broken, "all from 0 of 5: b abc Z ab b"},
        {std::make_shared<SortFunction>(), "all from 0 of 5: b abc Z ab b"},
        {byName, "all from 0 of 5: Z ab abc b b"},
    };
    for (const auto& test : cases) {
        if (test.sort) {
            manager->SetCapsuleSortFxn(*test.sort);
        }
        for (const bool progress : {false, true}) {
            told.clear();
            manager->RequestDefaultGraphicSet({{"other", {u8"/x"}}, {"last", {u8"/ü", u8"/z"}}}, progress);
            Flush();
            EXPECT_THAT(told, ElementsAre("first 3/-1: b abc Z", "failing 3/-1:", "last 5/5: ab b", test.all));
        }
    }
    EXPECT_EQ(failures.Get(), 12U + 2U) << "the source once a listing, the broken order";
    EXPECT_THAT(last->directories, ElementsAre(u"/ü", u"/z"));
    EXPECT_THAT(first->directories, IsEmpty());
}

TEST_F(ManagerTest, WhatASourceHandedOutBeforeItFailedStands)
{
    const auto half = Add("half", {u"kept", u"none"});
    half->onEntry = [](const CapsuleEntry& entry) {
        if (entry.name == u"none") {
            throw std::runtime_error("unreadable from here on");
        }
    };
    manager->AddGraphicSource(half); // twice in the list
    const FailuresTold failures;
    manager->RequestDefaultGraphicSet({}, false);
    manager->RequestSimilarTags(u"");
    Flush();
    EXPECT_THAT(told, ElementsAre("half 1/-1: kept", "half 2/2: kept", "all from 0 of 2: kept kept", "tags kept"));
    EXPECT_EQ(failures.Get(), 2U);
}

TEST_F(ManagerTest, APanelDoesNotWaitForTheIndex)
{
    Add("fake", {u"n"});
    std::atomic<int> dispatched = 0;
    std::set<std::u16string> indexed;
    std::promise<void> asked;
    orvcore::SetMainThreadDispatcher([&](const auto&) { // called by the task itself, the first time for the batch
        if (++dispatched == 1) {
            orvcapsule::QueryRapidFindDB({u"n"}, indexed);
            asked.set_value();
        }
    });
    manager->RequestDefaultGraphicSet({}, false);
    Await(asked.get_future()); // a main thread that runs calls already is not asked to
    Flush();
    orvcore::SetMainThreadDispatcher({});
    EXPECT_THAT(indexed, IsEmpty());
    orvcapsule::QueryRapidFindDB({u"n"}, indexed);
    EXPECT_THAT(indexed, ElementsAre(u"/n.zelt"));
}

TEST_F(ManagerTest, EntriesShowWhileTheirSourceIsBeingListed)
{
    const auto early = Add("early", {u"a", u"b", u"a"});
    early->announces = true;
    early->entries.push_back(early->entries[0]);
    early->entries.push_back(nullptr);
    Add("late", {u"c", u"d"});
    std::promise<void> shown;
    std::promise<void> aborted;
    std::string found;
    manager->SetLocalRequestEntriesFoundCallback(
        std::make_shared<GraphicSourceManager::EntriesFoundCallback>([&](const auto& entries) {
            EXPECT_FALSE(entries.empty());
            if (found.empty()) {
                shown.set_value();
            }
            found += Joined(entries);
            told.push_back("found" + found);
        }));
    early->onEntry = [&](const CapsuleEntry& entry) {
        if (entry.name == u"b") {
            Await(shown.get_future()); // the listing goes on when the host has what was found first
        }
    };
    manager->RequestDefaultGraphicSet({}, true);
    Flush();
    EXPECT_EQ(found, " a b a c d");
    const auto at = [&](const char* what) { return std::find(told.begin(), told.end(), what) - told.begin(); };
    EXPECT_LT(at("found a b a"), at("early 4/-1: a b a a"));
    EXPECT_LT(at("found a b a c d"), at("late 6/6: c d"));
    EXPECT_EQ(told.back(), "all from 0 of 6: a a a b c d");

    told.clear();
    early->onEntry = [&](const CapsuleEntry& entry) {
        if (entry.name == u"b") {
            Await(aborted.get_future());
        }
    };
    manager->RequestDefaultGraphicSet({}, false);
    early->listed.AwaitAtLeast(early->entries.size() + 1);
    manager->Abort();
    aborted.set_value();
    Flush();
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(ManagerTest, AnEmptyListingIsDeliveredToo)
{
    manager->RequestDefaultGraphicSet({}, false);
    Flush();
    EXPECT_THAT(told, ElementsAre("all from 0 of 0:"));
}

TEST_F(ManagerTest, ASearchDoesWithoutTheSourcesThatFail)
{
    manager->RequestGraphics({u"x"});
    Flush();
    Add("good");
    Add("failing")->onSearch = [] { throw std::runtime_error("broken"); };
    manager->RequestGraphics({u" b ", u"A", u"ü"});
    Flush();
    EXPECT_THAT(told, ElementsAre("found", "found  b  A ü"));
}

TEST_F(ManagerTest, OfVeryManyTagsTheFirstAreFound)
{
    const auto source = Add("fake", {u"n"});
    for (int i = 0; i < 5000; ++i) {
        source->entries[0]->tags.push_back(u"tag" + orvcore::ToUTF16(std::to_string(i)));
    }
    manager->RequestDefaultGraphicSet({}, false);
    manager->RequestSimilarTags(u"n");
    Flush();
    for (const char16_t* tag : {u"tag4095", u"tag4096"}) {
        manager->RequestSimilarTags(tag);
        Flush();
    }
    EXPECT_THAT(told, ElementsAre("fake 1/1: n", "all from 0 of 1: n", "tags n", "tags tag4095", "tags"));
}

TEST_F(ManagerTest, ADeliveryCopiesNoEntry)
{
    const auto source = Add("big", std::vector<std::u16string>(10000, u"same"));
    manager->SetLocalRequestPartialCompletionCallback(std::make_shared<GraphicSourceManager::PartialCompletionCallback>(
        [&](const auto& entries, int, int, const auto&) { EXPECT_EQ(entries, source->entries); }));
    manager->RequestDefaultGraphicSet({}, false);
    Flush();
    ASSERT_EQ(results.size(), source->entries.size());
    EXPECT_TRUE(std::equal(results.begin(), results.end(), source->entries.begin(),
                           [](const auto& result, const auto& entry) { return result.second == entry; }))
        << "equal names keep the order in which they were found";
    EXPECT_EQ(source->entries[0].use_count(), 2) << "nothing but the source and the host's map holds an entry";
}

TEST_F(ManagerTest, ProgressRunsOverTheWeightsOfAllSources)
{
    std::map<std::uint64_t, std::vector<orvappsupport::ProgressReport>> reports;
    const ProgressObserver observer([&](const auto& report) { reports[report.itemID].push_back(report); });
    Add("one");
    manager->AddGraphicSource(std::make_shared<OtherSource>());
    Add("two")->onList = [](const auto&) { throw std::runtime_error("unreadable"); };
    manager->SetLocalRequestCallback(std::make_shared<Request>([&](auto&, int, int) {
        ASSERT_FALSE(reports.empty());
        EXPECT_EQ(reports.begin()->second.back().event, orvappsupport::ProgressEvent::End) << "ended too late";
    }));
    manager->RequestDefaultGraphicSet({}, true);
    manager->LocalDirectoryChanged("one", u8"/folder", {u8"/a", u8"/b", u8"/c"});
    Flush();
    ASSERT_EQ(reports.size(), 3U);
    const struct {
        orvcore::UTF8String title;
        double upper;
        double end;
    } cases[] = {
        {u8"Loading All Graphics", 5.0, 5.0}, {u8"Loading Graphics", 2.0, 0.0}, {u8"Loading Graphics", 1.0, 0.0}};
    auto report = reports.begin();
    for (const auto& test : cases) {
        const auto& events = (report++)->second;
        EXPECT_EQ(events.front().event, orvappsupport::ProgressEvent::Begin);
        EXPECT_EQ(events.back().event, orvappsupport::ProgressEvent::End);
        EXPECT_EQ(events.front().categoryTitle, u8"Get Graphics");
        EXPECT_EQ(events.front().title, test.title);
        EXPECT_EQ(events.front().upper, test.upper);
        EXPECT_EQ(events.back().position, test.end);
        EXPECT_EQ(events.back().text, u8"");
    }
}

TEST_F(ManagerTest, ARequestOfAManagerThatNobodySharesIsRefused)
{
    int begun = 0;
    int ended = 0;
    const ProgressObserver observer([&](const auto& report) {
        begun += report.event == orvappsupport::ProgressEvent::Begin ? 1 : 0;
        ended += report.event == orvappsupport::ProgressEvent::End ? 1 : 0;
    });
    GraphicSourceManager unshared(orvcore::PathToUTF16(folder / "other.db"));
    EXPECT_THROW(unshared.RequestGraphics({}), std::bad_weak_ptr);
    EXPECT_THROW(unshared.RequestDefaultGraphicSet({}, true), std::bad_weak_ptr);
    EXPECT_THROW(unshared.RequestSimilarTags(u""), std::bad_weak_ptr);
    EXPECT_THROW(unshared.UpdateCustomDirectoryList({}), std::bad_weak_ptr);
    EXPECT_THROW(unshared.LocalDirectoryChanged({}, true), std::bad_weak_ptr);
    EXPECT_THROW(unshared.LocalDirectoryChanged("x", u8"/", {}), std::bad_weak_ptr);
    orvcore::RunMainThreadCalls();
    EXPECT_EQ(begun, 3);
    EXPECT_EQ(ended, 3);
}

} // namespace
