#include <sources/LocalGraphicsSource.h>
#include <sources/SourceNames.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/host/DebugSettings.h>
#include <orvcore/json/JSON.h>
#include <orvcore/tasks/MainThread.h>
#include <package/CapsuleZip.h>
#include <package/Workspace.h>
#include <tests/support/CountingToken.h>
#include <tests/support/Language.h>
#include <tests/support/Latch.h>
#include <tests/support/TempFolder.h>
#include <tests/support/ZipBytes.h>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

#include <map>
#include <set>
#include <thread>

namespace {

namespace fs = std::filesystem;
using namespace orvcapsule;
using orvcore::PathFromUTF8;
using orvcore::PathToUTF16;
using orvcore::PathToUTF8;
using orvcore::UTF16String;
using orvcore::UTF8String;
using test::CountingToken;
using test::TempFolder;
using testing::ElementsAre;
using testing::IsEmpty;
using Entries = std::vector<boost::shared_ptr<CapsuleEntry>>;
using Directories = std::vector<std::pair<UTF8String, UTF8String>>;

std::string Package(const std::string& id, const std::string& png = "still", const std::string& mp4 = {})
{
    test::ZipBytes zip;
    zip.Add({.name = "definition.json", .data = R"({"apiVersion":"2.2","capsuleID":")" + id + "\"}"});
    zip.Add({.name = "thumb.png", .data = png});
    if (!mp4.empty()) {
        zip.Add({.name = "thumb.mp4", .data = mp4});
    }
    return zip.Finish();
}

// Everything that an entry says.
std::string Describe(const CapsuleEntry& e)
{
    std::string text = orvcore::ToNarrow(e.path + u8'|' + e.thumbnailPath + u8'|' + e.videoPreviewPath);
    for (const std::string& key : e.sourcePath) {
        text += '|' + key;
    }
    for (const UTF16String& wide :
         {e.name, e.capsuleID, e.licenseID, e.mobileCompatibilityVersion, e.apiVersion, e.description, e.authorApp}) {
        text += '|' + orvcore::ToNarrow(wide);
    }
    for (const auto& list : {e.usedFonts, e.tags}) {
        for (const UTF16String& item : list) {
            text += ',' + orvcore::ToNarrow(item);
        }
    }
    for (const auto number : {e.fileSize, std::uint64_t{e.frameWidth}, std::uint64_t{e.frameHeight},
                              std::uint64_t{e.durationMs}, static_cast<std::uint64_t>(e.entryKind)}) {
        text += '|' + std::to_string(number);
    }
    text += e.needsTsUpgrade ? "|upgrade" : e.hasUnsupportedEffects ? "|effects" : "|";
    return text + (e.modified.is_special() ? "?" : "");
}

// The working folder has a fixed place: one test at a time, each with an empty one.
class LocalGraphicsSourceTest : public testing::Test {
protected:
    void SetUp() override
    {
        orvcore::RemoveTree(working_);
    }
    void TearDown() override
    {
        std::error_code missing;
        for (const fs::path& file : orvcore::ListDirectory(working_, missing).files) {
            EXPECT_FALSE(orvcore::PathToUTF8(file.filename()).starts_with(u8".")) << "a half-made preview stays behind";
        }
        orvcore::RemoveTree(working_);
    }

    void CopySamples() const
    {
        fs::copy(ORV_SAMPLES_DIR, temp_ / "root", fs::copy_options::recursive);
        fs::remove_all(temp_ / "root" / "libraries"); // of the cloud source
    }
    LocalGraphicsSource Source(const Directories& custom = {}) const
    {
        return LocalGraphicsSource(PathToUTF16(temp_ / "root"), custom);
    }
    Directories Custom(const std::string& name) const
    {
        return {{orvcore::ToUTF8(name), PathToUTF8(temp_ / name)}};
    }
    static Entries Search(const LocalGraphicsSource& source, const boost::shared_ptr<CheckCancel>& cancel = {})
    {
        Entries entries;
        int total = -1;
        source.Search({}, entries, 0, 0, total, cancel);
        EXPECT_EQ(total, static_cast<int>(entries.size()));
        return entries;
    }
    // Of a source with folders that cannot be listed, which are told; the listing is the same in either way.
    static Entries SearchAndFail(LocalGraphicsSource& source, std::vector<UTF8String>& failed)
    {
        Entries entries;
        Entries byDirectory;
        int total = -1;
        std::vector<UTF16String> directories;
        const auto add = [&](const Entries& found, const UTF16String&, bool) {
            byDirectory.insert(byDirectory.end(), found.begin(), found.end());
        };
        failed.clear();
        EXPECT_THROW(source.Search({}, entries, 0, 0, total, {}), unlisted_folders_exception);
        try {
            source.SearchByDirectory(add, directories, {});
            ADD_FAILURE() << "nothing told";
        } catch (const unlisted_folders_exception& told) {
            for (const FolderFailure& failure : told.GetFailures()) {
                failed.push_back(failure.folder);
            }
        }
        EXPECT_EQ(total, static_cast<int>(entries.size()));
        EXPECT_EQ(byDirectory.size(), entries.size());
        EXPECT_EQ(source.GetFolderFailures().size(), failed.size());
        return entries;
    }
    // The entries' paths below the test's folder.
    std::vector<std::string> Paths(const Entries& entries) const
    {
        std::vector<std::string> paths;
        for (const auto& entry : entries) {
            const fs::path path = PathFromUTF8(entry->path).lexically_relative(temp_.Path());
            paths.push_back(orvcore::ToNarrow(path.generic_u8string()));
        }
        return paths;
    }
    static std::string Content(const UTF8String& path)
    {
        const fs::path file = PathFromUTF8(path);
        return orvcore::IsFile(file) ? orvcore::ReadWholeFile(file) : "(missing)";
    }

    const fs::path working_ = PathFromUTF8(GetTempLocalDirectory());
    const TempFolder temp_;
};

TEST_F(LocalGraphicsSourceTest, FillsEntriesWithWhatIsThere)
{
    struct Row {
        std::u16string name;
        const char16_t* app;
        std::size_t fonts, tags;
        std::uint32_t width, ms;
        std::int32_t kind;
        bool upgrade;
        std::size_t still, video;
        const char* refusal = "";
    };
    const std::map<std::string, Row> rows = {
        {"root/lower-third.zelt", {u"Bauchbinde \u2013 schlicht", u"tsfx", 2, 5, 1920, 8000, 2, false, 5540, 8518}},
        {"root/bar-chart.zelt", {u"Bar Chart", u"tsfx", 1, 3, 1080, 6500, 2, true, 10141, 6634}},
        {"root/classic-title.zelt", {u"Classic Title", u"tsfx", 1, 2, 720, 5000, 2, false, 4929, 0}},
        {"root/countdown.zelt", {u"Countdown 10 s", u"crvd", 1, 3, 3840, 10000, 2, false, 8045, 7755}},
        {"root/untitled.zelt", {u"untitled", u"tsfx", 0, 0, 1280, 3000, 2, false, 8244, 0}},
        {"root/from-the-future.zelt", {u"from-the-future", u"", 0, 0, 0, 0, 0, false, 0, 0, "NewerVersion"}},
        {"root/damaged/broken-json.zelt", {u"broken-json", u"", 0, 0, 0, 0, 2, false, 5417, 0, "MalformedJSON"}},
        {"root/damaged/empty.zelt", {u"empty", u"", 0, 0, 0, 0, 0, false, 0, 0, "NotAZip"}},
        {"root/damaged/missing-framerate.zelt", {u"missing-framerate", u"", 0, 0, 0, 0, 0, false, 0, 0, "MissingKey"}},
        {"root/damaged/no-definition.zelt", {u"no-definition", u"", 0, 0, 0, 0, 0, false, 0, 0, "MissingDefinition"}},
        {"root/damaged/not-a-zip.zelt", {u"not-a-zip", u"", 0, 0, 0, 0, 0, false, 0, 0, "NotAZip"}},
        {"root/damaged/truncated.zelt", {u"truncated", u"", 0, 0, 0, 0, 0, false, 0, 0, "Truncated"}},
    };
    const orvtest::Language german("de_DE");
    CopySamples();
    const Entries entries = Search(Source());
    const auto paths = Paths(entries);
    EXPECT_EQ(entries.size(), rows.size() + 1) << "and one with a Japanese file name";
    EXPECT_EQ(paths.front(), "root/damaged/broken-json.zelt");
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto found = rows.find(paths[i]);
        if (found == rows.end()) {
            EXPECT_EQ(entries[i]->name, u"字幕タイトル");
            continue;
        }
        const Row& row = found->second;
        const CapsuleEntry& entry = *entries[i];
        EXPECT_EQ(entry.name, row.name) << paths[i];
        EXPECT_EQ(entry.authorApp, row.app) << paths[i];
        EXPECT_EQ(entry.usedFonts.size(), row.fonts) << paths[i];
        EXPECT_EQ(entry.tags.size(), row.tags) << paths[i];
        EXPECT_EQ(entry.frameWidth, row.width) << paths[i];
        EXPECT_EQ(entry.durationMs, row.ms) << paths[i];
        EXPECT_EQ(entry.entryKind, row.kind) << paths[i];
        EXPECT_EQ(entry.refusal ? entry.refusal->code : "", row.refusal) << paths[i];
        EXPECT_EQ(entry.needsTsUpgrade, row.upgrade) << paths[i];
        EXPECT_EQ(entry.thumbnailPath.empty() ? 0 : Content(entry.thumbnailPath).size(), row.still) << paths[i];
        EXPECT_EQ(entry.videoPreviewPath.empty() ? 0 : Content(entry.videoPreviewPath).size(), row.video) << paths[i];
        EXPECT_EQ(entry.fileSize, fs::file_size(PathFromUTF8(entry.path))) << paths[i];
        EXPECT_THAT(entry.sourcePath, ElementsAre(kLocalSourceID, kDefaultLocalSourceID)) << paths[i];
        const auto age = boost::posix_time::microsec_clock::universal_time() - entry.modified;
        EXPECT_LT(std::abs(age.total_seconds()), 600) << paths[i];
    }
}

TEST_F(LocalGraphicsSourceTest, FindsPackagesByTheirExactExtensionAndFollowsNoLinkToAFolder)
{
    for (const char* name :
         {"root/one/two/three/x.zelt", "root/b.zelt", "root/a.zelt", "root/X.ZELT", "root/y.Zelt",
          "root/one/z.zelt.bak", "root/.zelt", "root/d.zelt/in.txt", "else/e.zelt", "else/sub/f.zelt"}) {
        temp_.Write(name, "");
    }
    std::error_code error;
    fs::create_directory_symlink(temp_ / "root", temp_ / "root/one/loop", error);
    fs::create_symlink(temp_ / "nowhere", temp_ / "root/gone.zelt", error);
    fs::create_symlink("circle.zelt", temp_ / "root/circle.zelt", error);
    fs::create_symlink(temp_ / "else/e.zelt", temp_ / "root/linked.zelt", error);
    std::vector<std::string> expected = {"root/one/two/three/x.zelt", "root/a.zelt",      "root/b.zelt",
                                         "root/circle.zelt",          "root/linked.zelt", "else/e.zelt"};
    const LocalGraphicsSource source = Source(Custom("else"));
    if (error) {
        expected.erase(expected.begin() + 3, expected.begin() + 5);
    } else {
        const auto circle = Search(source).at(3);
        EXPECT_EQ(circle->refusal ? circle->refusal->code : "", "CannotOpen") << "what the system refuses is told";
        EXPECT_TRUE(circle->modified.is_not_a_date_time());
    }
    EXPECT_EQ(Paths(Search(source)), expected);
    EXPECT_THAT(source.GetDirectories(), ElementsAre(PathToUTF8(temp_ / "else"), PathToUTF8(temp_ / "root"),
                                                     PathToUTF8((temp_ / "root/one/two/three").make_preferred())));
    Entries before(3);
    int total = 0;
    source.Search({u"x"}, before, 0, 0, total, {});
    EXPECT_EQ(total, 3);
    EXPECT_EQ(before.size(), 3U);
}

TEST_F(LocalGraphicsSourceTest, OffersTheRootThenTheCustomDirectoriesByName)
{
    temp_.Write("b/x.zelt", "");
    const Directories custom = {{u8"Zoo", PathToUTF8(temp_ / "b")},
                                {u8"No path", u8""},
                                {u8"Gone", PathToUTF8(temp_ / "z")},
                                {u8"Gone", PathToUTF8(temp_ / "a")}};
    LocalGraphicsSource source(PathToUTF16(temp_ / "root") + u"/", custom);
    IGraphicSource::GraphicFilterID filter;
    filter.subFilters.resize(7);
    source.GetFilter(filter);
    std::vector<std::string> records;
    for (const auto& record : filter.subFilters) {
        records.push_back(orvcore::ToNarrow(record.name) + "|" + record.id +
                          (record.available ? "|there" : "|missing"));
    }
    const std::string folder = orvcore::ToNarrow(PathToUTF8(temp_.Path() / ""));
    EXPECT_THAT(records,
                ElementsAre("Local Templates Folder|graphicsource.local.default|there", "Gone|" + folder + "a|missing",
                            "Gone|" + folder + "z|missing", "Zoo|" + folder + "b|there"));
    using State = FolderState::State;
    std::vector<State> states;
    for (const FolderState& state : source.GetFolderStates()) {
        states.push_back(state.state);
    }
    EXPECT_THAT(states, ElementsAre(State::Missing, State::Available, State::Missing, State::Missing));
    EXPECT_EQ(filter.sourceID, kLocalSourceID);
    EXPECT_THAT(source.GetDirectories(), ElementsAre(PathToUTF8(temp_ / "b"), PathToUTF8(temp_ / "root")));
    EXPECT_THAT(Paths(Search(source)), ElementsAre("b/x.zelt")) << "a missing root hides nothing";
}

TEST_F(LocalGraphicsSourceTest, ListsOneDirectoryByAnyOfItsNames)
{
    for (const char* name :
         {"root/a.zelt", "root/sub/b.zelt", "root/sub/deep/c.zelt", "else/d.zelt", "else/x/e.zelt"}) {
        temp_.Write(name, "");
    }
    const UTF16String root = PathToUTF16(temp_ / "root");
    const UTF16String other = PathToUTF16(temp_ / "else");
    const std::vector<std::string> all = {"root/sub/deep/c.zelt", "root/sub/b.zelt", "root/a.zelt"};
    const std::pair<UTF16String, std::vector<std::string>> cases[] = {
        {root, all},
        {root + u"/", all},
        {root + u"/./sub/..", all},
        {orvcore::ToUTF16(kDefaultLocalSourceID), all},
        {root + u"/sub", {"root/sub/b.zelt"}},
        {root + u"//sub", {"root/sub/b.zelt"}},
        {root + u"/./sub/", {"root/sub/b.zelt"}},
        {root + u"/sub/deep/../", {"root/sub/b.zelt"}},
        {other, {"else/d.zelt"}},
        {other + u"/", {"else/d.zelt"}},
        {other + u"/x", {}},
        {PathToUTF16(temp_.Path()), {}},
        {u"", {}},
    };
    LocalGraphicsSource source = Source(Custom("else"));
    for (const auto& [directory, expected] : cases) {
        int calls = 0;
        source.SearchDirectory(
            [&, &wanted = directory, &paths = expected](const Entries& entries, const UTF16String& named, bool last) {
                ++calls;
                EXPECT_EQ(named, wanted);
                EXPECT_TRUE(last);
                EXPECT_EQ(Paths(entries), paths) << orvcore::ToNarrow(named);
            },
            directory, {});
        EXPECT_EQ(calls, 1);
    }
}

TEST_F(LocalGraphicsSourceTest, ListsDirectoryAfterDirectoryWithProgress)
{
    for (const char* name : {"root/a.zelt", "root/b.zelt", "root/readme.txt", "one/c.zelt", "one/d.txt"}) {
        temp_.Write(name, Package(name));
    }
    auto token = boost::make_shared<CheckCancel>();
    token->progressCategory = std::make_shared<orvappsupport::ProgressCategory>(u8"Get Graphics");
    token->progressItem = token->progressCategory->AddItem(u8"All", 0.0, 1.0);
    std::vector<orvappsupport::ProgressReport> own;
    orvappsupport::SetProgressObserver([&](const orvappsupport::ProgressReport& report) {
        if (report.title != u8"All") {
            own.push_back(report);
        }
    });
    Directories custom = Custom("gone");
    custom.push_back(Custom("one")[0]);
    std::vector<std::string> calls;
    std::vector<UTF16String> directories = {u"replaced"};
    const auto onDirectory = [&](const Entries& entries, const UTF16String& directory, bool last) {
        orvcore::RunMainThreadCalls();
        EXPECT_EQ(own.back().title, u8"Loading directory " + orvcore::ToUTF8(directory));
        EXPECT_NEAR(token->progressItem->GetState().position, last ? 0.9 : 0.6, 1e-6);
        EXPECT_NEAR(own.back().position, last ? 0.9 : 0.6, 1e-6);
        calls.push_back(PathFromUTF8(orvcore::ToUTF8(directory)).filename().string() + " " +
                        std::to_string(entries.size()) + (last ? " last" : ""));
        if (last) {
            throw std::runtime_error("the host's");
        }
    };
    EXPECT_THROW(Source(custom).SearchByDirectory(onDirectory, directories, token), std::runtime_error);
    orvcore::RunMainThreadCalls();
    orvappsupport::SetProgressObserver({});
    EXPECT_THAT(calls, ElementsAre("root 2", "one 1 last"));
    EXPECT_THAT(directories, ElementsAre(PathToUTF16(temp_ / "root"), PathToUTF16(temp_ / "one")));
    EXPECT_EQ(own.back().event, orvappsupport::ProgressEvent::End);
}

TEST_F(LocalGraphicsSourceTest, CancelledAtAnyPollHandsOutNothingOfThatListing)
{
    for (int i = 0; i < 12; ++i) {
        temp_.Write("root/" + std::to_string(i) + ".zelt", Package(std::to_string(i), "png", "mp4"));
    }
    temp_.Write("one/c.zelt", Package("c"));
    LocalGraphicsSource source = Source(Custom("one"));
    const auto never = boost::make_shared<CountingToken>(-1);
    ASSERT_EQ(Search(source, never).size(), 13U);
    ASSERT_GT(never->polls, 13);
    for (int k = 1; k <= never->polls; ++k) {
        const auto token = boost::make_shared<CountingToken>(k);
        token->progressCategory = std::make_shared<orvappsupport::ProgressCategory>(u8"");
        orvcore::RemoveTree(working_);
        EXPECT_THAT(Search(source, token), IsEmpty()) << k;
        orvcore::RemoveTree(working_); // nothing noted: as many polls again
        const auto again = boost::make_shared<CountingToken>(k);
        std::vector<UTF16String> directories;
        source.SearchByDirectory(
            [&](const Entries& entries, const UTF16String&, bool last) {
                EXPECT_FALSE(last) << k;
                EXPECT_EQ(entries.size(), 12U) << k;
                EXPECT_FALSE(entries.back()->thumbnailPath.empty());
            },
            directories, again);
    }
}

TEST_F(LocalGraphicsSourceTest, AFolderThatCannotBeListedCostsItselfAlone)
{
    std::error_code error;
    temp_.Write("else/a.zelt", "");
    orvcore::EnsureDirectory(temp_ / "root");
    fs::create_directory_symlink("itself", temp_ / "itself", error);
    if (error) {
        GTEST_SKIP() << "no symbolic links here";
    }
    Directories custom = Custom("itself");
    custom.push_back(Custom("else")[0]);
    LocalGraphicsSource source = Source(custom);
    IGraphicSource::GraphicFilterID filter;
    source.GetFilter(filter);
    EXPECT_TRUE(filter.subFilters.at(1).available);
    EXPECT_FALSE(filter.subFilters.at(2).available);
    std::vector<UTF8String> failed;
    EXPECT_THAT(Paths(SearchAndFail(source, failed)), ElementsAre("else/a.zelt"));
    EXPECT_THAT(failed, ElementsAre(PathToUTF8(temp_ / "itself")));

    LocalGraphicsSource badRoot(PathToUTF16(temp_ / "itself"), Custom("else"));
    EXPECT_THAT(Paths(SearchAndFail(badRoot, failed)), ElementsAre("else/a.zelt"));
    EXPECT_THROW(badRoot.GetDirectories(), fs::filesystem_error);
    fs::remove(temp_ / "itself");
    badRoot.SearchDirectory([](auto&&...) {}, PathToUTF16(temp_ / "itself"), {});
    EXPECT_THAT(badRoot.GetFolderFailures(), IsEmpty());
}

TEST_F(LocalGraphicsSourceTest, PassesOverWhatTheSystemDoesNotLetItRead)
{
    if (!std::is_same_v<fs::path::value_type, char>) {
        GTEST_SKIP() << "names here are Unicode and paths have other limits";
    }
    // Two chains of folders, one put into the other: the end of the whole has a path too long to be opened.
    const std::string name(250, 'n');
    fs::path outer = "root/outer";
    fs::path inner = "inner";
    for (int i = 0; i < 9; ++i) {
        outer /= name;
        inner /= name;
    }
    temp_.Write(outer / "o.zelt", "");
    temp_.Write(inner / "i.zelt", "");
    fs::rename(temp_ / "inner", temp_ / outer / "inner");
    const std::string odd = "root/odd\xff\xfe.zelt";
    temp_.Write(odd, Package("odd"));
    temp_.Write("root/z.zelt", "");
    LocalGraphicsSource source = Source();
    std::vector<UTF8String> failed;
    const Entries entries = SearchAndFail(source, failed);
    fs::rename(temp_ / outer / "inner", temp_ / "inner");
    EXPECT_EQ(failed.size(), 1U);
    EXPECT_THAT(Paths(entries),
                ElementsAre(orvcore::ToNarrow(outer.generic_u8string()) + "/o.zelt", odd, "root/z.zelt"));
    EXPECT_EQ(entries[1]->capsuleID, u"odd");
    EXPECT_EQ(entries[1]->name, u"odd\uFFFD\uFFFD");
    EXPECT_EQ(Content(entries[1]->thumbnailPath), "still");
}

TEST_F(LocalGraphicsSourceTest, KeepsAPreviewForOneStateOfOnePackage)
{
    temp_.Write("root/x.zelt", Package("id", "first"));
    const fs::path package = temp_ / "root/x.zelt";
    const LocalGraphicsSource source = Source(Custom("copy"));
    const auto first = Search(source).at(0);
    EXPECT_EQ(Content(first->thumbnailPath), "first");
    EXPECT_EQ(source.GetThumbnailPath(first, {}), first->thumbnailPath);
    orvcore::WriteBufferToFile(PathFromUTF8(first->thumbnailPath), "kept", 4);
    EXPECT_EQ(Content(Search(source).at(0)->thumbnailPath), "kept") << "extracted again";

    const auto time = fs::last_write_time(package);
    temp_.Write("copy/x.zelt", Package("id", "copy"));
    fs::last_write_time(temp_ / "copy/x.zelt", time);
    EXPECT_EQ(Content(Search(source).at(1)->thumbnailPath), "copy") << "another folder's preview";

    temp_.Write("root/x.zelt", Package("id", "second"));
    fs::last_write_time(package, time + std::chrono::seconds(2));
    EXPECT_EQ(Content(Search(source).at(0)->thumbnailPath), "second");
    EXPECT_EQ(Content(source.GetThumbnailPath(first, {})), "second");
    fs::remove(package);
    EXPECT_EQ(source.GetThumbnailPath(first, {}), first->thumbnailPath) << "still there";
}

TEST_F(LocalGraphicsSourceTest, ReadsAgainOnlyWhatChanged)
{
    orvcore::DebugSettings::SetInt("ORV.entrysettletime", 0);
    CopySamples();
    const LocalGraphicsSource source = Source();
    const auto list = [&](const std::string& language) {
        const orvtest::Language chosen(language);
        std::vector<std::string> texts;
        for (const auto& entry : Search(source)) {
            texts.push_back(Describe(*entry));
        }
        return texts;
    };
    const auto stores = [&] {
        std::set<fs::path> found;
        std::error_code missing;
        for (const fs::path& file : orvcore::ListDirectory(working_, missing).files) {
            if (file.extension() == ".notes") {
                found.insert(file);
            }
        }
        return found;
    };
    const auto english = list("en_US");
    ASSERT_EQ(stores().size(), 1U);
    const fs::path store = *stores().begin();
    EXPECT_EQ(list("en_US"), english);
    orvcore::RemoveTree(PathFromUTF8(Search(source).back()->thumbnailPath));
    EXPECT_EQ(list("en_US"), english) << "a lost preview comes back";
    EXPECT_FALSE(Content(Search(source).back()->thumbnailPath).starts_with("(missing)"));

    const std::string content = orvcore::ReadWholeFile(store);
    // The file begins with a count of eight bytes, then each note's hash, offset, size and checksum.
    for (const std::size_t at : {std::size_t{0}, std::size_t{7}, std::size_t{9}, std::size_t{17}, std::size_t{31},
                                 std::size_t{33}, content.size() / 2, content.size() - 1}) {
        std::string flipped = content;
        flipped[at] ^= 1;
        for (const std::string& damaged : {content.substr(0, at), flipped}) {
            orvcore::WriteBufferToFile(store, damaged.data(), damaged.size());
            EXPECT_EQ(list("en_US"), english) << damaged.size() << " of " << content.size() << " bytes, at " << at;
        }
    }

    const auto german = list("de_DE");
    ASSERT_EQ(stores().size(), 2U);
    orvcore::CopyOneFile(store == *stores().begin() ? *stores().rbegin() : *stores().begin(), store);
    EXPECT_EQ(list("en_US"), german) << "the packages were read again";

    const fs::path package = temp_ / "root/lower-third.zelt";
    std::error_code error;
    const orvcore::FileInfo before = orvcore::InspectTarget(package, error);
    const auto time = fs::last_write_time(package);
    do { // until the system's clock has moved on
        const std::string other = Package("other");
        temp_.Write("root/lower-third.zelt", other + std::string(before.size - other.size(), ' '));
        fs::last_write_time(package, time);
    } while (orvcore::InspectTarget(package, error) == before);
    const Entries changed = Search(source);
    orvcore::DebugSettings::Unset("ORV.entrysettletime");
    EXPECT_TRUE(std::any_of(changed.begin(), changed.end(), [](const auto& e) { return e->capsuleID == u"other"; }));
}

TEST_F(LocalGraphicsSourceTest, AListingInTwoLanguagesIsNotNoted)
{
    orvcore::DebugSettings::SetInt("ORV.entrysettletime", 0);
    CopySamples();
    const orvtest::Language english("en_US");
    const auto names = [this](const boost::shared_ptr<CheckCancel>& token) {
        std::vector<UTF16String> texts;
        for (const auto& entry : Search(Source(), token)) {
            texts.push_back(entry->name);
        }
        return texts;
    };
    const auto never = boost::make_shared<CountingToken>(-1);
    const auto expected = names(never);
    bool mixed = false;
    for (int k = 1; k < never->polls; k += 5) {
        orvcore::RemoveTree(working_);
        const auto change = [] { orvcore::Application::SetLanguage("de_DE"); };
        mixed = names(boost::make_shared<CountingToken>(k, change)) != expected || mixed;
        orvcore::Application::SetLanguage("en_US");
        EXPECT_EQ(names({}), expected) << k;
    }
    orvcore::DebugSettings::Unset("ORV.entrysettletime");
    EXPECT_TRUE(mixed);
}

TEST_F(LocalGraphicsSourceTest, SmallPackagesDoNotFillTheDisk)
{
    constexpr std::size_t kPackages = 8;
    const std::vector<char> blank(std::size_t{60} << 20);
    orvcore::EnsureDirectory(temp_ / "root");
    temp_.Write("in/definition.json", R"({"apiVersion":"2.2"})");
    orvcore::WriteBufferToFile(temp_ / "in/thumb.xyz", blank.data(), blank.size());
    ASSERT_TRUE(CapsuleZip(temp_ / "blank.zelt").Zip(temp_ / "in", {}, nullptr));
    std::string bytes = orvcore::ReadWholeFile(temp_ / "blank.zelt");
    for (auto at = bytes.find("thumb.xyz"); at != std::string::npos; at = bytes.find("thumb.xyz")) {
        bytes.replace(at, 9, "thumb.mp4"); // which would have been stored as it is
    }
    for (std::size_t i = 0; i < kPackages; ++i) {
        temp_.Write("root/" + std::to_string(i) + ".zelt", bytes);
    }
    temp_.Write("root/usual.zelt", Package("usual", "png", std::string(std::size_t{4} << 20, 'v')));
    const Entries entries = Search(Source());
    const auto hasVideo = [](const auto& entry) { return !entry->videoPreviewPath.empty(); };
    EXPECT_EQ(std::count_if(entries.begin(), entries.end(), hasVideo), 4 + 1);
    EXPECT_TRUE(hasVideo(entries.back()));
}

TEST_F(LocalGraphicsSourceTest, GoesOnWithoutPreviewsThatCannotBeHad)
{
    const std::vector<char> tooMuch(kMaxPreviewBytes + 1);
    temp_.Write("in/definition.json", R"({"apiVersion":"2.2","capsuleID":"large"})");
    temp_.Write("in/thumb.png", "still");
    orvcore::WriteBufferToFile(temp_ / "in/thumb.mp4", tooMuch.data(), tooMuch.size());
    orvcore::EnsureDirectory(temp_ / "root");
    ASSERT_TRUE(CapsuleZip(temp_ / "root/large.zelt").Zip(temp_ / "in", {}, nullptr));
    auto entry = Search(Source()).at(0);
    EXPECT_EQ(Content(entry->thumbnailPath), "still");
    EXPECT_EQ(entry->videoPreviewPath, u8"");
    for (int listing = 0; listing < 2; ++listing) { // the next one tells it, too
        ASSERT_NE(entry->previewFailure, nullptr);
        EXPECT_EQ(entry->previewFailure->code, "EntryTooLarge");
        entry = Search(Source()).at(0);
    }
    EXPECT_EQ(Source().GetThumbnail(entry, {}).failure, nullptr) << "it has a picture";

    orvcore::RemoveTree(working_);
    orvcore::WriteBufferToFile(working_, "no folder", 9); // nothing can be written there
    entry = Search(Source()).at(0);
    EXPECT_EQ(entry->capsuleID, u"large");
    EXPECT_EQ(entry->thumbnailPath, u8"");
    ASSERT_NE(entry->previewFailure, nullptr);
    EXPECT_EQ(entry->previewFailure->code, "WriteFailed");

    temp_.Write("root/none.zelt", test::ZipBytes().Add({.name = "definition.json", .data = "{}"}).Finish());
    temp_.Write("root/torn.zelt", "PK");
    for (const auto& [file, code] :
         {std::pair("large.zelt", "WriteFailed"), {"none.zelt", ""}, {"torn.zelt", "NotAZip"}}) {
        const auto asked = boost::make_shared<CapsuleEntry>();
        asked->path = orvcore::PathToUTF8(temp_ / "root" / file);
        const Thumbnail thumbnail = Source().GetThumbnail(asked, {});
        EXPECT_EQ(thumbnail.path, u8"") << file;
        EXPECT_EQ(thumbnail.failure ? thumbnail.failure->code : "", code) << file;
    }
}

TEST_F(LocalGraphicsSourceTest, DefinitionsAreReadUpToTheLargestSize)
{
    constexpr std::size_t most = orvcore::serialization::kMaxJSONSize;
    for (const std::size_t size : {std::size_t{40'000}, std::size_t{600'000}, most, most + 1}) {
        std::string definition = R"({"apiVersion":"2.2","capsuleID":"id"})";
        definition.resize(size, ' ');
        temp_.Write("root/x.zelt", test::ZipBytes().Add({.name = "definition.json", .data = definition}).Finish());
        EXPECT_EQ(Search(Source()).at(0)->capsuleID, size <= most ? u"id" : u"") << size;
    }
}

TEST_F(LocalGraphicsSourceTest, APreviewThatCanBeSeenIsWhole)
{
    const std::string picture(std::size_t{2} << 20, 'p');
    temp_.Write("root/x.zelt", Package("id", picture));
    const LocalGraphicsSource source = Source();
    const auto entry = Search(source).at(0);
    for (int round = 0; round < 15; ++round) {
        orvcore::RemoveTree(working_);
        orvtest::Latch start(4);
        orvtest::Latch ended(3);
        const auto extract = [&] {
            start.arrive_and_wait();
            EXPECT_EQ(Content(source.GetThumbnailPath(entry, {})).size(), picture.size());
            ended.count_down();
        };
        std::thread threads[] = {std::thread(extract), std::thread(extract), std::thread(extract)};
        start.arrive_and_wait();
        while (!orvcore::Exists(PathFromUTF8(entry->thumbnailPath)) && !ended.try_wait()) {
            std::this_thread::yield();
        }
        EXPECT_EQ(Content(entry->thumbnailPath).size(), picture.size());
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
}

} // namespace
