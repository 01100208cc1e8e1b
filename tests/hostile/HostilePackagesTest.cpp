// Small packages made to cost much: each command of zelt gives its answer and stays below the ceiling that
// docs/package-format.md states. A new trick is a new row.
#include "MeasuredRun.h"

#include <orvcore/json/JSON.h>
#include <orvstorage/ZipFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>
#include <tests/support/ZipBytes.h>

namespace {

using test::MeasuredRun;
using test::TempFolder;
using test::Zeros;
using test::ZipBytes;
using testing::AnyOf;
using testing::HasSubstr;

constexpr double kMostProcessorSeconds = 5;
constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;
constexpr std::size_t kMebibyte = 1016; // in blocks of Zeros

// A thousand to one, and no entry alone is beyond a limit.
std::string ManyBombs()
{
    const Zeros zeros(60 * kMebibyte);
    ZipBytes bytes;
    for (const char* name : {"definition.json", "thumb.png", "thumb.mp4", "thumb_de_DE.png", "project.tsgraphic"}) {
        bytes.Add({.name = name, .data = zeros.deflated, .method = 8, .declaredSize = zeros.size});
    }
    return bytes.Finish();
}

// Says that it is small, and is not.
std::string LyingBomb()
{
    const Zeros zeros(300 * kMebibyte);
    ZipBytes bytes;
    for (const char* name : {"definition.json", "thumb.png", "project.tsgraphic"}) {
        bytes.Add({.name = name, .data = zeros.deflated, .method = 8, .declaredSize = 1000});
    }
    return bytes.Finish();
}

// Claims more memory and disk than there is.
std::string HugeClaim()
{
    ZipBytes bytes;
    for (const char* name : {"definition.json", "thumb.png", "project.tsgraphic"}) {
        bytes.Add({.name = name, .data = "x", .declaredSize = std::int64_t{1} << 50, .zip64 = true});
    }
    return bytes.Finish();
}

// A thousand entries that all have the same bytes of data.
std::string SharedData()
{
    const Zeros zeros(200);
    ZipBytes bytes;
    for (int i = 0; i < 1000; ++i) {
        bytes.Add({.name = std::to_string(i),
                   .data = i == 0 ? zeros.deflated : "",
                   .method = 8,
                   .declaredSize = zeros.size,
                   .declaredPacked = static_cast<std::int64_t>(zeros.deflated.size()),
                   .offset = 0});
    }
    return bytes.Finish();
}

std::string ManyEntries()
{
    ZipBytes bytes;
    for (int i = 0; i < 5000; ++i) {
        bytes.Add({.name = std::to_string(i)});
    }
    return bytes.Finish();
}

// Pictures that are nothing but blank, which a listing extracts.
std::string BlankPreviews()
{
    const Zeros zeros(60 * kMebibyte);
    ZipBytes bytes;
    const auto crc = static_cast<std::int64_t>(test::Crc32(std::string(static_cast<std::size_t>(zeros.size), '\0')));
    for (const char* name : {"thumb.png", "thumb.mp4"}) {
        bytes.Add({.name = name, .data = zeros.deflated, .method = 8, .crc = crc, .declaredSize = zeros.size});
    }
    return bytes.Finish();
}

// Names lead through folders: a byte or two make one.
std::string Folders(int entries, int depth)
{
    ZipBytes bytes;
    for (int i = 0; i < entries; ++i) {
        std::string name = std::to_string(i);
        for (int level = 0; level < depth; ++level) {
            name += "/d";
        }
        bytes.Add({.name = name});
    }
    return bytes.Finish();
}

std::string DeepFolders()
{
    return Folders(240, 1000);
}

std::string ManyFolders()
{
    return Folders(400, 63); // each level is allowed, their sum is not
}

// Each is reported, and none is written.
std::string RefusedNames()
{
    ZipBytes bytes;
    for (int i = 0; i < 9000; ++i) {
        bytes.Add({.name = "../" + std::to_string(i)});
    }
    return bytes.Finish();
}

std::string Repeated(const std::string& text, std::size_t count)
{
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

// As a package of nothing else: what repeats packs to little.
std::string Definition(const std::string& text)
{
    const TempFolder folder;
    folder.Write("in/definition.json", text);
    EXPECT_TRUE(orvstorage::ZipFile(folder / "a.zelt").Zip(folder / "in", {}, nullptr));
    return folder.Read("a.zelt");
}

std::string HugeDefinition()
{
    return Definition('[' + Repeated("0,", std::size_t{30} << 20) + "0]");
}

std::string ManyValues()
{
    return Definition(R"({"apiVersion":"2.2","x":[)" + Repeated("0,", orvcore::serialization::kMaxJSONSize / 2 - 40) +
                      "0]}");
}

// As deep as readers go, in every member.
std::string DeepDefinition()
{
    constexpr std::size_t kInner = orvcore::serialization::kMaxJSONDepth - 1;
    std::string text = R"({"apiVersion":"2.2")";
    for (int i = 0; i < 400; ++i) {
        text += ",\"" + std::to_string(i) + "\":" + std::string(kInner, '[') + std::string(kInner, ']');
    }
    return Definition(text + '}');
}

// Each control lies in the one before it, in a language of its own, and has a mistake in every value.
std::string ManyMistakes()
{
    std::string text = R"({"apiVersion":"2.2","clientControls":[)";
    for (int i = 0; i < 18000; ++i) {
        const std::string id = std::to_string(i);
        text += (i == 0 ? "" : ",") + std::string(R"({"type":10,"id":")") + id +
                R"(","canAnimat":1,"canAnimate":true,)" +
                R"("groupexpanded":true,"uiName":{"strDB":[{"localeString":")" + id + R"(","str":""}]},"value":[")" +
                std::to_string(i + 1) + "\",\"x\"]}";
    }
    return Definition(text + "]}");
}

struct Hostile {
    const char* name;
    std::string (*make)();
    const char* answer; ///< of `zelt check`, among others
};

class HostilePackages : public testing::TestWithParam<Hostile> {};

TEST_P(HostilePackages, CostLittle)
{
    const TempFolder folder;
    folder.Write("in/a.zelt", GetParam().make());
    ASSERT_LE(orvcore::ReadWholeFile(folder / "in/a.zelt").size(), std::size_t{1} << 20);
    const auto at = [&](const char* name) { return orvcore::ToNarrow(orvcore::PathToUTF8(folder / name)); };
    const std::string package = at("in/a.zelt");
    const std::vector<std::string> commands[] = {
        {"check", package},
        {"info", package},
        {"list", at("in")},
        {"index", "build", at("index.db"), package},
        {"unpack", package, at("out")},
        {"set", package, "--name", "x"},
    };
    for (const auto& command : commands) {
        const MeasuredRun run = test::RunMeasured(ORV_ZELT, command, folder / "output");
        EXPECT_THAT(run.exitCode, AnyOf(0, 1)) << command[0] << ": " << folder.Read("output");
        if (&command == commands) {
            EXPECT_THAT(folder.Read("output"), HasSubstr(GetParam().answer));
        }
#if !defined(ORV_SANITIZED)
        EXPECT_LE(run.processorSeconds, kMostProcessorSeconds) << command[0];
        EXPECT_LE(run.peakBytes, kMostBytes) << command[0];
#endif
        EXPECT_GT(run.peakBytes, 0U);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Tricks, HostilePackages,
    testing::Values(Hostile{"ManyBombs", ManyBombs, "it unpacks to more bytes for each packed byte than allowed"},
                    Hostile{"LyingBomb", LyingBomb, "its content does not have the size it declares"},
                    Hostile{"HugeClaim", HugeClaim, "it is larger than allowed"},
                    Hostile{"SharedData", SharedData, "its data overlaps another entry's"},
                    Hostile{"ManyEntries", ManyEntries, "there is no definition.json in it"},
                    Hostile{"BlankPreviews", BlankPreviews, "there is no definition.json in it"},
                    Hostile{"DeepFolders", DeepFolders, "it lies in more folders in one another than allowed"},
                    Hostile{"ManyFolders", ManyFolders, "it has more entries or folders than allowed"},
                    Hostile{"RefusedNames", RefusedNames, "its name leads out of the folder"},
                    Hostile{"HugeDefinition", HugeDefinition, "it is larger than allowed"},
                    Hostile{"ManyValues", ManyValues, "values"},
                    Hostile{"DeepDefinition", DeepDefinition, "there is no poster"},
                    Hostile{"ManyMistakes", ManyMistakes, "more warnings"}),
    [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
