#include <tests/manager/ManagerFixture.h>
#include <tests/support/FakeLibraries.h>

#include <sources/LocalGraphicsSource.h>
#include <sources/LumoLibrariesSource.h>
#include <sources/SourceNames.h>

#include <algorithm>

namespace {

using namespace test;
using orvcore::PathToUTF16;
using orvcore::PathToUTF8;
using testing::ElementsAre;

// A browse panel over a local folder and cloud libraries.
class LibrariesTest : public ManagerFixture {
protected:
    LibrariesTest()
    {
        folder.Write("root/Local.zelt", orvcore::ReadWholeFile(Name(ORV_SAMPLES_DIR) / "countdown.zelt"));
        folder.Write("one.json", R"({"apiVersion":"2.2","capsuleID":"one","capsuleTags":["timer of a cloud"]})");
        using Folders = std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>;
        manager->AddGraphicSource(
            std::make_shared<orvcapsule::LocalGraphicsSource>(PathToUTF16(folder / "root"), Folders{}));
        manager->AddGraphicSource(std::make_shared<orvcapsule::LumoLibrariesSource>(true));
    }

    // A library of elements that share one definition.
    void AddLibrary(const std::string& id, const std::string& name, int elements)
    {
        libraries->order.push_back(id);
        for (int i = 0; i < elements; ++i) {
            const std::string number = std::to_string(i);
            const std::string package = orvcore::ToNarrow(PathToUTF8(folder / (id + number + ".zelt")));
            libraries->libraries[id].elements[number] = {name + number, package,
                                                         orvcore::ToNarrow(PathToUTF8(folder / "one.json")), "", ""};
        }
    }

    const FakeLibraries::Installed libraries;
};

TEST_F(LibrariesTest, ListsAndSearchesBothSourcesAsOne)
{
    AddLibrary("lib1", "Cloud ", 1);
    AddLibrary("lib2", "Zebra ", 1);
    double upper = 0;
    const ProgressObserver observer([&](const orvappsupport::ProgressReport& report) {
        upper = report.title == u8"Loading All Graphics" ? report.upper : upper;
    });
    for (const bool progressive : {true, false}) {
        told.clear();
        manager->RequestDefaultGraphicSet({}, progressive);
        manager->RequestGraphics({u"timer"});
        Flush();
        const std::string prefix = orvcore::ToNarrow(PathToUTF8(folder.Path() / ""));
        EXPECT_THAT(told,
                    ElementsAre("graphicsource.local 1/-1: Countdown 10s",
                                "graphicsource.LumoLibraries 3/3: Cloud 0 Zebra 0",
                                "all from 0 of 3: Cloud 0 Countdown 10s Zebra 0",
                                "found " + prefix + "lib10.zelt " + prefix + "lib20.zelt " +
                                    orvcore::ToNarrow(PathToUTF8((folder / "root/Local.zelt").make_preferred()))));
    }
    EXPECT_NEAR(upper, 1.0, 1e-6) << "0.9 and 0.1";

    auto& elements = libraries->libraries["lib2"].elements;
    elements["0"].name = "Renamed";
    elements["1"] = elements["0"]; // another one with its package
    elements["1"].name = "Twin";
    told.clear();
    manager->LocalDirectoryChanged(orvcapsule::kLumoLibrariesSourceID, u8"lib2", {});
    manager->RequestGraphics({u"renamed"});
    PumpUntil([this] { return told.size() == 2; });
    EXPECT_EQ(told[0], "folder lib2: Renamed Twin last");
    EXPECT_THAT(told[1], testing::EndsWith("lib20.zelt"));
}

TEST_F(LibrariesTest, ALargeLibraryCanBeListedCancelledAndReplacedMeanwhile)
{
    constexpr int kElements = 10'000;
    AddLibrary("lib", "Cloud ", kElements);
    Gate gate;
    std::size_t found = 0;
    manager->SetLocalRequestEntriesFoundCallback(std::make_shared<GraphicSourceManager::EntriesFoundCallback>(
        [&found](const auto& entries) { found += entries.size(); }));
    int asked = 0;
    libraries->onElement = [&](const std::string&) {
        if (++asked == kElements / 2) {
            gate.Pass();
        }
    };
    manager->RequestDefaultGraphicSet({}, true);
    gate.AwaitTask();
    PumpUntil([&found] { return found > 100; });        // while the library is asked for its other elements
    libraries->libraries["lib"].elements.erase("9999"); // the listing waits
    manager->RequestDefaultGraphicSet({}, true);        // and is cancelled
    gate.Open();
    found = 0;
    Flush();
    EXPECT_EQ(found, std::size_t{kElements});
    EXPECT_EQ(asked, kElements / 2 + kElements - 1);
    EXPECT_EQ(results.size(), std::size_t{kElements});
    EXPECT_EQ(std::count_if(told.begin(), told.end(), [](const auto& text) { return text.starts_with("all"); }), 1);
}

} // namespace
