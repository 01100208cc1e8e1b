#include <tests/support/TempFolder.h>

#include <tests/support/Latch.h>

#include <orvcore/files/Paths.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <sources/SearchIndex.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

namespace {

using Set = std::set<std::u16string>;

class SearchIndexTest : public testing::Test {
protected:
    ~SearchIndexTest() override
    {
        orvcapsule::TerminateRapidFindDB();
    }
    void Initialize(const char* name = "index.db") const
    {
        orvcapsule::InitializeRapidFindDB(orvcore::PathToUTF16(folder / name));
    }
    static Set Query(const std::vector<std::u16string>& terms)
    {
        Set matches;
        orvcapsule::QueryRapidFindDB(terms, matches);
        return matches;
    }
    static Set Tags(const std::u16string& prefix)
    {
        Set tags;
        orvcapsule::GetTags(prefix, tags);
        return tags;
    }

    test::TempFolder folder;
};

TEST_F(SearchIndexTest, WithoutAnIndexNothingHappens)
{
    const auto all = [] {
        orvcapsule::InsertRow(u8"/a.zelt", u8"Title");
        orvcapsule::ClearRapidFindDB({});
        orvcapsule::ClearRapidFindDB({u8"/a.zelt"});
        EXPECT_EQ(Query({u"title"}), Set{});
        EXPECT_EQ(Tags(u""), Set{});
    };
    all();
    folder.Write("text.db", "not an index, and long enough to be taken for one at first sight" + std::string(500, '.'));
    using orvcapsule::SearchIndexState;
    EXPECT_EQ(orvcapsule::GetSearchIndexStatus().state, SearchIndexState::None);
    for (const auto& [unusable, state] : {std::pair("text.db", SearchIndexState::NotAnIndex),
                                          std::pair("missing/index.db", SearchIndexState::Unavailable),
                                          std::pair(".", SearchIndexState::Unavailable)}) {
        Initialize(unusable);
        all();
        EXPECT_EQ(orvcapsule::GetSearchIndexStatus().state, state) << unusable;
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"text.db"});
}

TEST_F(SearchIndexTest, TellsThatADamagedFileWasSetAside)
{
    folder.Write("index.db", "SQLite format 3");
    for (const bool wasSetAside : {true, false}) {
        Initialize();
        EXPECT_EQ(orvcapsule::GetSearchIndexStatus().state, orvcapsule::SearchIndexState::Open);
        EXPECT_EQ(orvcapsule::GetSearchIndexStatus().wasSetAside, wasSetAside);
        orvcapsule::TerminateRapidFindDB();
    }
}

TEST_F(SearchIndexTest, FindsTemplatesByTheirTexts)
{
    Initialize();
    orvcapsule::InsertRow(u8"/t/Ünter.zelt", u8"Lower Third");
    orvcapsule::InsertRow(u8"/t/Ünter.zelt", u8"Økland");
    orvcapsule::InsertRow(u8"/t/100%20 'x'.zelt", u8"Økland");
    orvcapsule::InsertRow(u8"", u8"Økland");
    orvcapsule::InsertRow(u8"/t/empty.zelt", u8"");
    EXPECT_EQ(Query({u"okland"}), (Set{u"/t/Ünter.zelt", u"/t/100%20 'x'.zelt"}));
    EXPECT_EQ(Query({u"okland", u"third"}), Set{u"/t/Ünter.zelt"});
    EXPECT_EQ(Query({u""}), (Set{u"/t/Ünter.zelt", u"/t/100%20 'x'.zelt"}));
    Set kept = {u"kept", u"/t/Ünter.zelt"};
    orvcapsule::QueryRapidFindDB({}, kept);
    EXPECT_EQ(kept.size(), 2U);
    orvcapsule::QueryRapidFindDB({u"okland"}, kept);
    EXPECT_EQ(kept, (Set{u"kept", u"/t/Ünter.zelt", u"/t/100%20 'x'.zelt"}));
}

TEST_F(SearchIndexTest, ClearsSomeOrAll)
{
    Initialize();
    for (const char8_t* path : {u8"/a", u8"/b", u8"/c"}) {
        orvcapsule::InsertRow(path, u8"Title");
        orvcapsule::InsertRow(path, u8"tag");
    }
    orvcapsule::ClearRapidFindDB({u8"/a", u8"/unknown", u8"/c"});
    EXPECT_EQ(Query({u"t"}), Set{u"/b"});
    orvcapsule::ClearRapidFindDB({});
    EXPECT_EQ(Query({u"t"}), Set{});
    orvcapsule::InsertRow(u8"/d", u8"Title");
    EXPECT_EQ(Query({u"t"}), Set{u"/d"});
}

TEST_F(SearchIndexTest, TagsAreInLowerCaseAndAtMostAHundred)
{
    Initialize();
    orvcapsule::InsertRow(u8"/a", u8"Title");
    orvcapsule::InsertRow(u8"/b", u8"title");
    orvcapsule::InsertRow(u8"/b", u8"ÉTÉ Title");
    EXPECT_EQ(Tags(u"TIT"), (Set{u"title", u"été title"}));
    for (int i = 0; i < 200; ++i) {
        orvcapsule::InsertRow(u8"/n", orvcore::ToUTF8("number " + std::to_string(i)));
    }
    EXPECT_EQ(Tags(u"numb").size(), 100U);
    EXPECT_EQ(Tags(u"").size(), 99U); // the first hundred, of which two are one in lower case
}

TEST_F(SearchIndexTest, ASecondInitialisationReplacesTheIndex)
{
    Initialize();
    orvcapsule::InsertRow(u8"/a", u8"Title");
    Initialize("second.db");
    EXPECT_EQ(Query({u"title"}), Set{});
    Initialize();
    EXPECT_EQ(Query({u"title"}), Set{u"/a"});
    orvcapsule::TerminateRapidFindDB();
    EXPECT_EQ(Query({u"title"}), Set{});
}

TEST_F(SearchIndexTest, TerminationDoesNotDisturbCallsThatRun)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 400; ++i) {
                orvcapsule::InsertRow(orvcore::ToUTF8(std::to_string(t * 1000 + i)), u8"text");
                Query({u"text"});
                Tags(u"t");
            }
        });
    }
    for (int i = 0; i < 20; ++i) {
        Initialize();
        orvcapsule::TerminateRapidFindDB();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    Initialize();
    orvcapsule::InsertRow(u8"last", u8"final");
    EXPECT_EQ(Query({u"final"}), Set{u"last"});
}

#if GTEST_HAS_DEATH_TEST
TEST(SearchIndexDeathTest, AWorkerMayInsertWhileTheProcessExits)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    static orvcore::NoDestructor<std::filesystem::path> folder(orvcore::TempDirectory() / "orvcapsule-exit-test");
    orvcore::EnsureDirectory(*folder);
    const auto leaveBusy = [] {
        static orvcore::NoDestructor<orvtest::Latch> inserted(1);
        const auto executor = orvcore::GetCPUBoundExecutor();
        orvcapsule::InitializeRapidFindDB(orvcore::PathToUTF16(*folder / "index.db"));
        static_cast<void>(executor->Post([] {
            // When the exit is known, what it destroys before it waits for tasks is gone; it waits two seconds only.
            for (bool isLast = false; !isLast;) {
                isLast = orvcore::IsTerminating();
                orvcapsule::InsertRow(u8"key", u8"text");
                orvcapsule::ClearRapidFindDB({u8"key"});
                inserted->count_down();
            }
        }));
        inserted->wait();
        std::exit(7);
    };
    EXPECT_EXIT(leaveBusy(), testing::ExitedWithCode(7), "");
    orvcore::RemoveTree(*folder);
}
#endif

} // namespace
