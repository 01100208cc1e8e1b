#include <tests/manager/ManagerFixture.h>

#include <orvcore/files/Files.h>
#include <sources/LocalGraphicsSource.h>
#include <sources/SourceNames.h>

#include <algorithm>

namespace {

using namespace test;
using orvcore::PathToUTF16;
using orvcore::PathToUTF8;
using testing::ElementsAre;

// The road of a browse panel over real packages: listing, search, tags, changed folders.
class BrowseTest : public ManagerFixture {
protected:
    BrowseTest()
    {
        orvcore::EnsureDirectory(folder / "root" / "below");
        for (const char* name : {"bar-chart.zelt", "countdown.zelt"}) {
            std::filesystem::copy_file(samples / name, folder / "root" / name);
        }
        std::filesystem::copy_file(samples / "classic-title.zelt", folder / "root" / "below" / "classic.zelt");
        std::filesystem::copy_file(samples / "damaged" / "truncated.zelt", folder / "root" / "torn.zelt");
        manager->AddGraphicSource(
            std::make_shared<orvcapsule::LocalGraphicsSource>(PathToUTF16(folder / "root"), NoFolders{}));
        manager->SetLocalRequestPartialCompletionCallback(nullptr);
    }

    // What a request tells, the test's folder left out.
    std::vector<std::string> Answer()
    {
        Flush();
        const std::string prefix = orvcore::ToNarrow(PathToUTF8(folder.Path() / ""));
        for (std::string& text : told) {
            for (auto at = text.find(prefix); at != std::string::npos; at = text.find(prefix)) {
                text.erase(at, prefix.size());
            }
            std::replace(text.begin(), text.end(), '\\', '/');
        }
        return std::exchange(told, {});
    }
    std::vector<std::string> Found(const std::vector<std::u16string>& terms)
    {
        manager->RequestGraphics(terms);
        return Answer();
    }
    std::vector<std::string> Tags(const std::u16string& text)
    {
        manager->RequestSimilarTags(text);
        return Answer();
    }

    using NoFolders = std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>;
    const std::filesystem::path samples = ORV_SAMPLES_DIR;
};

TEST_F(BrowseTest, SearchesAndSuggestsWhatItListed)
{
    EXPECT_THAT(Found({u"chart"}), ElementsAre("found"));
    manager->RequestDefaultGraphicSet({}, true);
    EXPECT_THAT(Answer(), ElementsAre("all from 0 of 4: Bar Chart Classic Title Countdown 10s torn"));
    const struct {
        std::vector<std::u16string> terms;
        const char* found;
    } cases[] = {
        {{u"CHART"}, "found root/bar-chart.zelt"},
        {{u"time"}, "found root/countdown.zelt"},
        {{u"t", u"classic"}, "found root/below/classic.zelt"},
        {{u"torn"}, "found root/torn.zelt"},
        {{u"chart", u"classic"}, "found"},
        {{}, "found"},
    };
    for (const auto& test : cases) {
        EXPECT_THAT(Found(test.terms), ElementsAre(test.found));
    }
    EXPECT_THAT(Tags(u"ti"), ElementsAre("tags classic title timer title"));
    EXPECT_THAT(Tags(u"zz"), ElementsAre("tags"));

    const auto thumbnail = manager->GetThumbnailPath(results[0], nullptr);
    EXPECT_TRUE(orvcore::IsFile(orvcore::PathFromUTF8(thumbnail)));
    EXPECT_EQ(manager->GetLocalDirectories(),
              (std::set{PathToUTF8(folder / "root"), PathToUTF8(folder / "root" / "below")}));
}

TEST_F(BrowseTest, EntriesAndPreviewsShowWhileTheListingRuns)
{
    const auto gate = std::make_shared<Gate>();
    Add("slow")->onList = [gate](const auto&) { gate->Pass(); };
    std::multiset<GraphicSourceManager::EntryPtr> found;
    manager->SetLocalRequestEntriesFoundCallback(
        std::make_shared<GraphicSourceManager::EntriesFoundCallback>([&](const auto& entries) {
            found.insert(entries.begin(), entries.end());
            for (const auto& entry : entries) {
                EXPECT_EQ(manager->GetThumbnailPath(entry, nullptr), entry->thumbnailPath);
            }
        }));
    manager->RequestDefaultGraphicSet({}, true);
    gate->AwaitTask();
    PumpUntil([&] { return found.size() == 4; });
    gate->Open();
    Flush();
    EXPECT_EQ(results.size(), 4U);
    for (const auto& [position, entry] : results) {
        EXPECT_EQ(found.count(entry), 1U);
    }
}

TEST_F(BrowseTest, AChangedFolderIsListedAgainAlone)
{
    manager->RequestDefaultGraphicSet({}, false);
    Answer();
    const auto root = PathToUTF8(folder / "root");
    const auto below = PathToUTF8(folder / "root" / "below");
    const auto chart = PathToUTF8(folder / "root" / "bar-chart.zelt");
    const auto classic = PathToUTF8(folder / "root" / "below" / "classic.zelt");

    std::filesystem::rename(folder / "root" / "bar-chart.zelt", folder / "root" / "below" / "moved.zelt");
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, below, {chart});
    EXPECT_THAT(Answer(), ElementsAre("folder root/below: Classic Title Bar Chart last"));
    EXPECT_THAT(Found({u"chart"}), ElementsAre("found root/below/moved.zelt"));
    EXPECT_THAT(Found({u"down"}), ElementsAre("found root/countdown.zelt"));

    // A relisting that is replaced before it ran still takes the files that are gone out of the index.
    std::filesystem::remove(orvcore::PathFromUTF8(classic));
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, below, {classic});
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, below, {});
    EXPECT_THAT(Answer(), ElementsAre("folder root/below: Bar Chart last"));
    EXPECT_THAT(Found({u"classic"}), ElementsAre("found"));

    // What exists keeps its rows, whoever is asked for it and wherever it lies.
    const auto countdown = PathToUTF8(folder / "root" / "countdown.zelt");
    manager->LocalDirectoryChanged("unknown", root, {countdown});
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, below, {countdown});
    EXPECT_THAT(Answer(), ElementsAre("folder root: last", "folder root/below: Bar Chart last"));
    EXPECT_THAT(Found({u"down"}), ElementsAre("found root/countdown.zelt"));

    const auto odd = PathToUTF8(folder / "root" / "." / "below");
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, odd, {});
    EXPECT_THAT(Answer(), ElementsAre("folder root/./below: Bar Chart last"));
    EXPECT_THAT(Found({u"chart"}), ElementsAre("found root/below/moved.zelt"));

    manager->LocalDirectoryChanged({}, true);
    EXPECT_THAT(Answer(), ElementsAre("all from 0 of 3: Bar Chart Countdown 10s torn"));

    // A second root folder is a source of its own with the same identifier.
    const auto second = folder / "second" / "below";
    orvcore::EnsureDirectory(second);
    std::filesystem::copy_file(folder / "root" / "countdown.zelt", second / "new.zelt");
    manager->AddGraphicSource(
        std::make_shared<orvcapsule::LocalGraphicsSource>(PathToUTF16(folder / "second"), NoFolders{}));
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, PathToUTF8(second), {});
    EXPECT_THAT(Answer(), ElementsAre("folder second/below: Countdown 10s last"));
    std::filesystem::remove_all(second);
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, PathToUTF8(second), {});
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, PathToUTF8(folder / "nowhere"), {});
    EXPECT_THAT(Answer(), ElementsAre("folder second/below: last", "folder nowhere: last"));
}

TEST_F(BrowseTest, ACustomFolderShowsWithTheNextListing)
{
    orvcore::EnsureDirectory(folder / "mine");
    std::filesystem::copy_file(samples / "lower-third.zelt", folder / "mine" / "lower.zelt");
    const auto before = manager->FindGraphicSource(orvcapsule::kLocalSourceID);
    manager->UpdateCustomDirectoryList({{u8"Mine", PathToUTF8(folder / "mine")}});
    manager->LocalDirectoryChanged({}, false);
    EXPECT_THAT(Answer(),
                ElementsAre("all from 0 of 5: Bar Chart Classic Title Countdown 10s Lower Third – Clean torn"));
    EXPECT_NE(manager->FindGraphicSource(orvcapsule::kLocalSourceID), before);
    EXPECT_THAT(manager->GetFolderFailures("unknown"), testing::IsEmpty());
    EXPECT_EQ(manager->GetLocalDirectories().count(PathToUTF8(folder / "mine")), 1U);

    manager->Shutdown();
    manager = std::make_shared<GraphicSourceManager>(PathToUTF16(folder / "index.db"));
    SetCallbacks(*manager);
    const auto fake = Add(orvcapsule::kLocalSourceID);
    manager->UpdateCustomDirectoryList({{u8"Mine", u8"/"}});
    Flush();
    EXPECT_EQ(manager->FindGraphicSource(orvcapsule::kLocalSourceID), fake) << "not a LocalGraphicsSource: left alone";
}

// A source of the host's own; with a heir it knows how to be replaced.
class DerivedSource : public orvcapsule::LocalGraphicsSource {
public:
    using LocalGraphicsSource::LocalGraphicsSource;
    std::shared_ptr<LocalGraphicsSource>
    MakeSuccessor(const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& folders) const override
    {
        return makesSuccessor ? std::make_shared<DerivedSource>(GetRootFolder(), folders)
                              : LocalGraphicsSource::MakeSuccessor(folders);
    }
    bool makesSuccessor = true;
};

TEST_F(BrowseTest, ASourceOfTheHostsOwnStaysOfItsKind)
{
    manager->Shutdown();
    manager = std::make_shared<GraphicSourceManager>(PathToUTF16(folder / "index.db"));
    const auto first = std::make_shared<DerivedSource>(PathToUTF16(folder / "root"), NoFolders{});
    manager->AddGraphicSource(first);
    const auto replace = [this](const char8_t* name) {
        manager->SetLocalDirectoryRequestCallback(directory);
        manager->UpdateCustomDirectoryList({{name, u8"/"}});
        Flush();
        return std::dynamic_pointer_cast<DerivedSource>(manager->FindGraphicSource(orvcapsule::kLocalSourceID));
    };
    const FailuresTold failures;
    const auto second = replace(u8"Mine");
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first);
    EXPECT_EQ(failures.Get(), 0U);
    second->makesSuccessor = false;
    EXPECT_EQ(replace(u8"Other"), second) << "refused";
    EXPECT_EQ(second->GetCustomDirectories().at(0).first, u8"Mine");
    EXPECT_EQ(failures.Get(), 1U);
}

TEST_F(BrowseTest, AFolderThatCannotBeListedCostsItselfAlone)
{
    std::error_code error;
    std::filesystem::create_directory_symlink("itself", folder / "itself", error);
    if (error) {
        GTEST_SKIP() << "no symbolic links here";
    }
    const auto itself = PathToUTF8(folder / "itself");
    orvcore::EnsureDirectory(folder / "mine");
    std::filesystem::copy_file(samples / "lower-third.zelt", folder / "mine" / "lower.zelt");
    manager->UpdateCustomDirectoryList({{u8"Bad", itself}, {u8"Mine", PathToUTF8(folder / "mine")}});
    const std::string all = "all from 0 of 5: Bar Chart Classic Title Countdown 10s Lower Third – Clean torn";
    const auto failed = [&] {
        std::vector<orvcore::UTF8String> folders;
        for (const auto& failure : manager->GetFolderFailures(orvcapsule::kLocalSourceID)) {
            EXPECT_TRUE(failure.reason);
            folders.push_back(failure.folder);
        }
        return folders;
    };
    for (const bool progress : {false, true}) {
        const FailuresTold failures;
        manager->RequestDefaultGraphicSet({}, progress);
        EXPECT_THAT(Answer(), ElementsAre(all));
        EXPECT_EQ(failures.Get(), 1U);
        EXPECT_THAT(failed(), ElementsAre(itself));
        EXPECT_THAT(Found({u"lower"}), ElementsAre("found mine/lower.zelt"));
    }
    std::filesystem::remove(folder / "itself");
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, PathToUTF8(folder / "mine"), {});
    Answer();
    EXPECT_THAT(failed(), ElementsAre(itself)) << "another folder's relisting says nothing of it";
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, itself, {});
    Answer();
    EXPECT_THAT(failed(), testing::IsEmpty());
}

TEST_F(BrowseTest, AFileWhoseNameIsNoUTF8IsFoundUnderItsPath)
{
    if (!std::is_same_v<std::filesystem::path::value_type, char>) {
        GTEST_SKIP() << "names here are Unicode";
    }
    for (const char* name : {"odd\xff.zelt", "odd\xfe.zelt"}) {
        folder.Write(std::string("root/odd\xfd/") + name, "");
    }
    manager->RequestDefaultGraphicSet({}, false);
    Flush();
    std::set<orvcore::UTF8String> listed;
    for (const auto& [position, entry] : results) {
        if (entry->name == u"odd\uFFFD") {
            listed.insert(entry->path);
        }
    }
    std::set<orvcore::UTF8String> found;
    manager->SetDatabaseRequestCallback(std::make_shared<TextSet>([&](auto texts) { found = texts; }));
    manager->RequestGraphics({u"odd"});
    Flush();
    EXPECT_EQ(listed.size(), 2U);
    EXPECT_EQ(found, listed);

    std::filesystem::remove(orvcore::PathFromUTF8(*listed.begin()));
    manager->LocalDirectoryChanged(orvcapsule::kLocalSourceID, PathToUTF8(folder / "root/odd\xfd"), {*listed.begin()});
    manager->RequestGraphics({u"odd"});
    Flush();
    EXPECT_EQ(found, std::set{*listed.rbegin()});
    EXPECT_EQ(told.back(), "folder " + (folder / "root/odd\xfd").string() + ": odd\uFFFD last");
}

} // namespace
