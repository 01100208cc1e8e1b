#include <tests/manager/ManagerFixture.h>

#include <sources/SearchIndex.h>

#include <random>

namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

class CancelTest : public ManagerFixture {
protected:
    void RequestEverything()
    {
        manager->RequestDefaultGraphicSet({}, false);
        manager->RequestGraphics({u"x"});
        manager->RequestSimilarTags(u"none");
        manager->LocalDirectoryChanged("fake", u8"/a", {});
        manager->LocalDirectoryChanged("fake", u8"/b", {});
    }

    const std::shared_ptr<FakeSource> source = Add("fake", {u"n"});
};

const char* const kPartial = "fake 1/1: n";
const char* const kAll = "all from 0 of 1: n";
const char* const kFolderA = "folder /a: n last";
const char* const kFolderB = "folder /b: n last";

struct CancelCase {
    const char* name;
    std::function<void(GraphicSourceManager&)> act;
    std::vector<std::string> told;
};

const CancelCase kCases[] = {
    {"nothing", [](auto&) {}, {kPartial, kAll, "found x", "tags", kFolderA, kFolderB}},
    {"the searches",
     [](auto& manager) {
         manager.CancelGraphicRequests();
         manager.CancelGraphicRequests();
     },
     {kPartial, kAll, "tags", kFolderA, kFolderB}},
    {"the tags",
     [](auto& manager) { manager.CancelSimilarTagRequests(); },
     {kPartial, kAll, "found x", kFolderA, kFolderB}},
    {"everything", [](auto& manager) { manager.Abort(); }, {}},
    {"an older search",
     [](auto& manager) { manager.RequestGraphics({u"y"}); },
     {kPartial, kAll, "tags", kFolderA, kFolderB, "found y"}},
    {"older tags",
     [](auto& manager) { manager.RequestSimilarTags(u"other"); },
     {kPartial, kAll, "found x", kFolderA, kFolderB, "tags"}},
    {"an older listing",
     [](auto& manager) { manager.RequestDefaultGraphicSet({}, true); },
     {"found x", "tags", kFolderA, kFolderB, kPartial, kAll}},
    {"all folders by a relisting",
     [](auto& manager) { manager.LocalDirectoryChanged({}, false); },
     {kPartial, kAll, "found x", "tags", kPartial, kAll}},
    {"an older relisting of a folder",
     [](auto& manager) { manager.LocalDirectoryChanged("fake", u8"/a", {}); },
     {kPartial, kAll, "found x", "tags", kFolderB, kFolderA}},
};

TEST_F(CancelTest, QueuedRequestsEndWithoutAnswer)
{
    for (const CancelCase& test : kCases) {
        SCOPED_TRACE(test.name);
        told.clear();
        const auto gate = std::make_shared<Gate>();
        source->onSearch = [gate] { gate->Pass(); };
        manager->RequestGraphics({u"blocks the executor"});
        gate->AwaitTask();
        RequestEverything();
        test.act(*manager);
        gate->Open();
        Flush();
        EXPECT_EQ(told, test.told);
    }
}

TEST_F(CancelTest, DeliveriesOnTheirWayAreDropped)
{
    for (const CancelCase& test : kCases) {
        SCOPED_TRACE(test.name);
        told.clear();
        const auto allQueued = std::make_shared<Gate>();
        allQueued->Open();
        source->onList = [allQueued](const std::u16string& listed) {
            if (listed == u"/c") {
                allQueued->Pass();
            }
        };
        RequestEverything();
        manager->LocalDirectoryChanged("fake", u8"/c", {});
        allQueued->AwaitTask();
        test.act(*manager);
        Flush();
        std::erase(told, "folder /c: n last");
        EXPECT_EQ(told, test.told);
    }
}

TEST_F(CancelTest, ShutdownDuringAListingReturnsAtOnce)
{
    const auto gate = std::make_shared<Gate>();
    source->onList = [gate](const auto&) { gate->Pass(); };
    auto second = std::make_shared<FakeSource>("second");
    std::future<void> listingEnded = second->destroyed.get_future();
    manager->AddGraphicSource(std::move(second));
    RequestEverything();
    gate->AwaitTask();
    source->onTerminate = [this] { told.push_back("terminated"); };
    manager->Shutdown();
    RequestEverything(); // refused
    gate->Open();
    Await(std::move(listingEnded)); // which alone still held the second source
    orvcore::RunMainThreadCalls();
    EXPECT_THAT(told, ElementsAre("terminated"));
}

TEST_F(CancelTest, ATaskThatOutlivesItsManagerLeavesTheNextOnesIndexAlone)
{
    const auto gate = std::make_shared<Gate>();
    source->onList = [gate](const auto&) { gate->Pass(); };
    auto second = std::make_shared<FakeSource>("second");
    std::future<void> relistingEnded = second->destroyed.get_future();
    manager->AddGraphicSource(std::move(second));
    manager->LocalDirectoryChanged("fake", u8"/", {u8"/n.zelt"}); // which is no file, so it would leave the index
    gate->AwaitTask();
    manager->Shutdown();
    manager = std::make_shared<GraphicSourceManager>(orvcore::PathToUTF16(folder / "index.db"));
    SetCallbacks(*manager);
    Add("fake", {u"n"});
    manager->RequestDefaultGraphicSet({}, false);
    Flush();
    gate->Open();
    Await(std::move(relistingEnded));
    told.clear();
    manager->RequestSimilarTags(u"n");
    Flush();
    EXPECT_THAT(told, ElementsAre("tags n"));
}

TEST_F(CancelTest, ARelistingCancelledHalfwayLosesNoTemplate)
{
    constexpr std::size_t kEntries = 5000;
    std::vector<std::u16string> names;
    for (std::size_t i = 0; i < kEntries; ++i) {
        names.push_back(u"template " + orvcore::ToUTF16(std::to_string(i)));
    }
    const auto big = Add("big", names);
    folder.Write("changed.zelt", "");
    big->entries.back()->path = orvcore::PathToUTF8(folder / "changed.zelt");
    manager->RequestDefaultGraphicSet({}, false);
    Flush();
    manager->LocalDirectoryChanged("big", u8"/", {big->entries.back()->path});
    big->listed.AwaitAtLeast(2 * kEntries); // from here on the index is changed
    manager->Abort();
    Flush();
    std::set<std::u16string> found;
    orvcapsule::QueryRapidFindDB({u"template"}, found);
    EXPECT_EQ(found.size(), kEntries);
}

TEST_F(CancelTest, WhatIsCancelledBeforeItRunsTakesNothingOutOfTheIndex)
{
    folder.Write("there.zelt", "");
    source->entries[0]->path = orvcore::PathToUTF8(folder / "there.zelt");
    manager->RequestDefaultGraphicSet({}, false);
    Flush();
    const auto gate = std::make_shared<Gate>();
    source->onSearch = [gate] { gate->Pass(); };
    manager->RequestGraphics({u"blocks the executor"});
    gate->AwaitTask();
    manager->RequestDefaultGraphicSet({}, true);
    manager->LocalDirectoryChanged({}, false);
    manager->LocalDirectoryChanged("fake", u8"/", {source->entries[0]->path});
    manager->Abort();
    gate->Open();
    Flush();
    told.clear();
    manager->RequestSimilarTags(u"n");
    Flush();
    EXPECT_THAT(told, ElementsAre("tags n"));
}

TEST_F(CancelTest, ACancelledFolderRelistingSaysSo)
{
    std::map<std::uint64_t, orvappsupport::ProgressReport> last;
    const ProgressObserver observer([&](const auto& report) { last[report.itemID] = report; });
    for (const bool withCallback : {true, false}) {
        last.clear();
        manager->SetLocalDirectoryRequestCallback(withCallback ? directory : nullptr);
        const auto gate = std::make_shared<Gate>();
        source->onSearch = [gate] { gate->Pass(); };
        manager->RequestGraphics({});
        manager->LocalDirectoryChanged("fake", u8"/a", {});
        manager->LocalDirectoryChanged("fake", u8"/a", {});
        gate->Open();
        manager->SetLocalDirectoryRequestCallback(directory);
        Flush();
        orvcore::RunMainThreadCalls(); // the text, which the dropped delivery queued
        ASSERT_EQ(last.size(), 3U);
        EXPECT_EQ(last.begin()->second.text, u8"Graphic Loading Canceled");
        EXPECT_EQ(std::next(last.begin())->second.text, u8"");
    }
    EXPECT_THAT(told, ElementsAre("found", kFolderA, "found"));
}

TEST_F(CancelTest, TwoHundredRestartsAtRandomPointsLeaveOneAnswer)
{
    constexpr int kRestarts = 200;
    constexpr std::size_t kEntries = 10000;
    const auto big = Add("big", std::vector<std::u16string>(kEntries, u"name"));
    manager->SetLocalRequestPartialCompletionCallback(nullptr);
    std::mt19937 random(20210); // the same points in every run
    int newest = -1;
    int answers = 0;
    for (int i = 0; i <= kRestarts; ++i) {
        newest = i;
        manager->SetLocalRequestCallback(std::make_shared<Request>([&, i](auto& map, int, int) {
            EXPECT_EQ(i, newest) << "a stale delivery";
            EXPECT_EQ(map.size(), kEntries + 1);
            ++answers;
        }));
        const std::size_t before = big->listed.Get();
        manager->RequestDefaultGraphicSet({}, i % 2 == 0);
        if (i == kRestarts) {
            break;
        }
        const std::size_t point = before + 1 + random() % kEntries;
        if (i % 4 != 0) {
            big->listed.AwaitAtLeast(point);
        }
        if (i % 3 == 0) {
            manager->Abort();
            newest = -1;
        }
        orvcore::RunMainThreadCalls();
    }
    Flush();
    EXPECT_GE(answers, 1);
    told.clear();
    manager->RequestSimilarTags(u"nam");
    Flush();
    EXPECT_THAT(told, ElementsAre("tags name"));
}

} // namespace
