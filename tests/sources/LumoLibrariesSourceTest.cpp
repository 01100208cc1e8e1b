#include <sources/LumoLibrariesSource.h>
#include <sources/SourceNames.h>

#include <orvcore/host/DebugSettings.h>
#include <orvcore/tasks/MainThread.h>
#include <package/CapsuleZip.h>
#include <package/Workspace.h>
#include <tests/support/CountingToken.h>
#include <tests/support/FakeLibraries.h>
#include <tests/support/Language.h>
#include <tests/support/TempFolder.h>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

namespace {

using namespace orvcapsule;
using orvcore::UTF16String;
using orvcore::UTF8String;
using test::CountingToken;
using testing::ElementsAre;
using testing::IsEmpty;
using Entries = std::vector<boost::shared_ptr<CapsuleEntry>>;

class LumoLibrariesSourceTest : public testing::Test {
protected:
    LumoLibrariesSourceTest()
    {
        orvcore::DebugSettings::SetInt("ORV.entrysettletime", 0);
        orvcore::RemoveTree(working_);
        const CapsuleZip sample(std::filesystem::path(ORV_SAMPLES_DIR) / "lower-third.zelt");
        temp_.Write("named.json", orvcore::ToNarrow(sample.GetZELTDescriptionJSON()));
        temp_.Write("unnamed.json", R"({"apiVersion":"2.2","capsuleID":"no name"})");
        temp_.Write("broken.json", R"({"apiVersion":"2.2","sourceInfo")");
        temp_.Write("x.zelt", "package");
        libraries->order = {"second", "first", "empty"};
        libraries->libraries["first"] = {"Same name", {{"a", Element("named.json", "still.png", "video.mp4")}}};
        libraries->libraries["second"] = {"Same name",
                                          {{"b", Element("unnamed.json")},
                                           {"c", Element("broken.json", "still.png")},
                                           {"d", Element("missing.json")},
                                           {"e", {"Element", "", File("named.json"), "", ""}},
                                           {"f", {"Element", File("gone.zelt"), "", "", ""}}}};
    }
    ~LumoLibrariesSourceTest() override
    {
        orvcore::DebugSettings::Unset("ORV.entrysettletime");
        std::error_code ignored;
        orvcore::RemoveTree(working_, ignored);
    }

    std::string File(const std::string& name) const
    {
        return name.empty() ? name : orvcore::ToNarrow(orvcore::PathToUTF8(temp_ / name));
    }
    test::FakeLibraries::Element Element(const std::string& definition, const std::string& still = {},
                                         const std::string& video = {}) const
    {
        return {"Element", File("x.zelt"), File(definition), File(still), File(video)};
    }
    Entries Search(const boost::shared_ptr<CheckCancel>& cancel = {}) const
    {
        Entries entries;
        int total = -1;
        source_.Search({}, entries, 0, 0, total, cancel);
        EXPECT_EQ(total, static_cast<int>(entries.size()));
        return entries;
    }
    static std::vector<std::string> Names(const Entries& entries)
    {
        std::vector<std::string> names;
        for (const auto& entry : entries) {
            names.push_back(entry->GetLumoElementID() + ": " + orvcore::ToNarrow(entry->name));
        }
        return names;
    }
    // "library: entries" of each call, the last one marked.
    ILocalGraphicSource::OnDirectory Note(std::vector<std::string>& calls) const
    {
        return [&calls](const Entries& entries, const UTF16String& library, bool last) {
            calls.push_back(orvcore::ToNarrow(library) + " " + std::to_string(entries.size()) + (last ? " last" : ""));
        };
    }

    const test::TempFolder temp_;
    const std::filesystem::path working_ = orvcore::PathFromUTF8(GetTempLocalDirectory());
    const test::FakeLibraries::Installed libraries;
    mutable LumoLibrariesSource source_{true};
};

TEST_F(LumoLibrariesSourceTest, FillsEntriesWithWhatIsThere)
{
    const orvtest::Language german("de_DE");
    const std::vector<std::string> names = {"b: Element", "c: Element", "d: Element", "f: Element",
                                            "a: Bauchbinde – schlicht"};
    for (const char* round : {"read", "recalled"}) {
        const Entries entries = Search();
        ASSERT_EQ(Names(entries), names) << round;
        const CapsuleEntry& full = *entries[4];
        EXPECT_THAT(full.sourcePath, ElementsAre(kLumoLibrariesSourceID, "first"));
        EXPECT_EQ(full.GetLibraryID(), "first");
        EXPECT_EQ(full.path, orvcore::AsUTF8(File("x.zelt")));
        EXPECT_EQ(source_.GetThumbnailPath(entries[4], {}), orvcore::AsUTF8(File("still.png")));
        EXPECT_EQ(full.videoPreviewPath, orvcore::AsUTF8(File("video.mp4")));
        EXPECT_EQ(full.fileSize, 7U);
        EXPECT_FALSE(full.modified.is_special());
        EXPECT_EQ(full.authorApp, u"tsfx");
        EXPECT_EQ(full.frameWidth, 1920U);
        EXPECT_EQ(full.durationMs, 8000U);
        EXPECT_EQ(full.usedFonts.size(), 2U);
        EXPECT_EQ(full.tags.size(), 5U);
        EXPECT_EQ(entries[0]->capsuleID, u"no name") << round;
        EXPECT_EQ(entries[1]->apiVersion, u"");
        EXPECT_EQ(entries[1]->thumbnailPath, orvcore::AsUTF8(File("still.png")));
        EXPECT_EQ(entries[3]->fileSize, 0U) << "a package that is gone";
        EXPECT_TRUE(entries[3]->modified.is_special());
    }
}

TEST_F(LumoLibrariesSourceTest, TellsWhichDefinitionsAreMissingOrCannotBeLookedAt)
{
    std::error_code noLinks; // on some systems
    std::filesystem::create_symlink("circle", temp_ / "circle", noLinks);
    libraries->order = {"first"};
    libraries->libraries["first"] = {"Same name",
                                     {{"a", Element("circle")},
                                      {"b", {"Element", File("circle"), File("named.json"), "", ""}},
                                      {"c", Element("missing.json")}}};
    std::vector<std::string> refusals;
    for (const auto& entry : Search()) {
        refusals.push_back(entry->refusal ? entry->refusal->code : "");
    }
    EXPECT_THAT(refusals, ElementsAre(noLinks ? "MissingDefinition" : "CannotOpen", "", "MissingDefinition"));
}

TEST_F(LumoLibrariesSourceTest, OffersTheLibrariesInTheManagersOrder)
{
    IGraphicSource::GraphicFilterID filter;
    filter.subFilters.resize(7);
    source_.GetFilter(filter);
    std::vector<std::string> records;
    for (const auto& record : filter.subFilters) {
        records.push_back(record.id + " " + orvcore::ToNarrow(record.name) + (record.available ? "" : " missing"));
    }
    EXPECT_EQ(filter.name, u8"Lumo Libraries");
    EXPECT_EQ(filter.sourceID, kLumoLibrariesSourceID);
    EXPECT_THAT(records, ElementsAre("second Same name", "first Same name", "empty "));
    libraries->order.clear();
    source_.GetFilter(filter);
    EXPECT_THAT(filter.subFilters, IsEmpty());
    EXPECT_THAT(Search(), IsEmpty());
}

TEST_F(LumoLibrariesSourceTest, ListsLibraryAfterLibraryWithProgress)
{
    auto token = boost::make_shared<CheckCancel>();
    token->progressCategory = std::make_shared<orvappsupport::ProgressCategory>(u8"Get Graphics");
    token->progressItem = token->progressCategory->AddItem(u8"All", 0.0, 1.0);
    std::vector<UTF8String> titles;
    orvappsupport::SetProgressObserver([&](const auto& report) { titles.push_back(report.title); });
    std::vector<std::string> calls;
    std::vector<UTF16String> directories = {u"replaced"};
    const auto note = Note(calls);
    source_.SearchByDirectory(
        [&](const Entries& entries, const UTF16String& library, bool last) {
            note(entries, library, last);
            EXPECT_NEAR(token->progressItem->GetState().position, 0.1 * static_cast<double>(calls.size()) / 3, 1e-6);
        },
        directories, token);
    orvcore::RunMainThreadCalls();
    orvappsupport::SetProgressObserver(nullptr);
    EXPECT_THAT(calls, ElementsAre("second 4", "first 1", "empty 0 last"));
    EXPECT_THAT(directories, ElementsAre(u"second", u"first", u"empty"));
    EXPECT_THAT(titles, testing::Contains(u8"Loading Lumo Library Motion Graphics"));
    const std::pair<UTF16String, std::vector<std::string>> cases[] = {
        {u"first", {"first 1 last"}},
        {u"unknown", {"unknown 0 last"}},
        {kAllLibraries, {"second 4", "first 1", "empty 0 last"}},
    };
    for (const auto& [directory, expected] : cases) {
        calls.clear();
        source_.SearchDirectory(note, directory, {});
        EXPECT_EQ(calls, expected);
    }
    libraries->order.clear();
    calls.clear();
    source_.SearchDirectory(note, kAllLibraries, {});
    source_.SearchByDirectory(note, directories, {});
    EXPECT_THAT(calls, ElementsAre("LumoLibraries.AllLibraries 0 last"));
    EXPECT_THAT(directories, IsEmpty());
}

TEST_F(LumoLibrariesSourceTest, ReadsAgainOnlyWhatChanged)
{
    const auto name = [&](const char* language) {
        const orvtest::Language chosen(language);
        return Names(Search()).back();
    };
    libraries->order = {"first"};
    const std::string english = name("en_US");
    const auto store = orvcore::ListDirectory(working_).files.at(0);
    const std::string german = name("de_DE");
    for (const auto& other : orvcore::ListDirectory(working_).files) {
        if (other != store) {
            orvcore::CopyOneFile(other, store);
        }
    }
    EXPECT_NE(english, german);
    EXPECT_EQ(name("en_US"), german) << "the definition was read again";
    temp_.Write("named.json", orvcore::ToNarrow(u8" ") + temp_.Read("named.json"));
    EXPECT_EQ(name("en_US"), english);

    libraries->libraries["first"].elements["a"] = Element("unnamed.json");
    EXPECT_EQ(name("en_US"), "a: Element") << "another definition";
    EXPECT_EQ(name("en_US"), "a: Element");
    libraries->libraries["first"].elements["a"].name = "Renamed";
    EXPECT_EQ(name("en_US"), "a: Renamed");
}

TEST_F(LumoLibrariesSourceTest, AListingThatIsCancelledAnywhereDropsWhatItGathered)
{
    const auto ignore = [](const Entries&, const UTF16String&, bool) { ADD_FAILURE() << "called after the end"; };
    source_.SearchDirectory(ignore, u"unknown", boost::make_shared<CountingToken>(1));
    int k = 1;
    for (bool reached = true; reached; ++k) {
        const auto token = boost::make_shared<CountingToken>(k);
        const Entries entries = Search(token);
        reached = token->polls >= k;
        EXPECT_EQ(entries.size(), reached ? 0U : 5U) << k;
        const auto other = boost::make_shared<CountingToken>(k);
        std::vector<UTF16String> directories;
        source_.SearchByDirectory(
            [&](const Entries&, const UTF16String&, bool) { EXPECT_LT(other->polls, k) << "called after the end"; },
            directories, other);
    }
    EXPECT_GT(k, 10);
}

TEST_F(LumoLibrariesSourceTest, ALibraryMayBeReplacedInTheMiddleOfAListing)
{
    libraries->order = {"second"};
    libraries->onElement = [&](const std::string& elementID) {
        if (elementID == "c") { // the rest of the library as it was has no package any more
            libraries->libraries["second"] = {"Other", {{"n", Element("named.json")}}};
            orvcore::RemoveTree(temp_ / "unnamed.json");
            orvcore::RemoveTree(temp_ / "x.zelt");
        }
    };
    EXPECT_THAT(Names(Search()), ElementsAre("b: Element", "c: "));
    EXPECT_EQ(Search().size(), 1U);
}

} // namespace
