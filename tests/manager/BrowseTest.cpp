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

    manager->LocalDirectoryChanged("unknown", root, {});
    EXPECT_THAT(Answer(), ElementsAre("folder root: last"));
    EXPECT_THAT(Found({u"down"}), ElementsAre("found root/countdown.zelt"));

    manager->LocalDirectoryChanged({}, true);
    EXPECT_THAT(Answer(), ElementsAre("all from 0 of 3: Bar Chart Countdown 10s torn"));
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
    EXPECT_EQ(manager->GetLocalDirectories().count(PathToUTF8(folder / "mine")), 1U);

    manager->Shutdown();
    manager = std::make_shared<GraphicSourceManager>(PathToUTF16(folder / "index.db"));
    SetCallbacks(*manager);
    const auto fake = Add(orvcapsule::kLocalSourceID);
    manager->UpdateCustomDirectoryList({{u8"Mine", u8"/"}});
    Flush();
    EXPECT_EQ(manager->FindGraphicSource(orvcapsule::kLocalSourceID), fake) << "not a LocalGraphicsSource: left alone";
}

} // namespace
