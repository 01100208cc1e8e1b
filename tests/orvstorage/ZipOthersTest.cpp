// Archives of other programs read by us, and ours by them; archives beyond the old format's limits.
#include <orvstorage/ZipFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>
#include <tests/support/ZipBytes.h>

#include <cstdlib>

namespace {

namespace fs = std::filesystem;
using orvstorage::ZipError;
using orvstorage::ZipFile;
using test::TempFolder;
using test::ZipBytes;

struct Program {
    const char* name;
    const char* pack;            ///< in the folder of the files; makes ../theirs.zip
    const char* test;            ///< in the same folder; tests ../ours.zip
    const char* stream = "true"; ///< packs so that sizes are written behind the data, where the program can
};

void PrintTo(const Program& program, std::ostream* out)
{
    *out << program.name;
}

// The programs' own text encoding must not come from whoever runs the tests.
bool RunIn(const fs::path& folder, const std::string& command)
{
    const std::string line =
        "cd '" + orvcore::ToNarrow(orvcore::PathToUTF8(folder)) + "' && export LC_ALL=C.UTF-8 && " + command;
    return std::system((line + " >../out.log 2>&1").c_str()) == 0; // NOLINT
}

class ZipOthers : public testing::TestWithParam<Program> {};

TEST_P(ZipOthers, UnderstandEachOther)
{
    const TempFolder folder;
    const std::vector<std::string> names = {"definition.json", "Thumbnails/\u5b57\u5e55.png", "sub/deep/empty",
                                            "project \u00e9.tsgraphic"};
    for (const std::string& name : names) {
        folder.Write("in/" + name, name == "sub/deep/empty" ? "" : std::string(3000, 'x') + name);
    }
    if (!RunIn(folder / "in", std::string("command -v ") + GetParam().name)) {
        GTEST_SKIP() << GetParam().name << " is not installed";
    }
    ASSERT_TRUE(RunIn(folder / "in", GetParam().pack));
    const ZipFile theirs(folder / "theirs.zip");
    ASSERT_TRUE(theirs.UnZip(folder / "out", true)) << theirs.GetLastFailure().Message();
    for (const std::string& name : names) {
        EXPECT_EQ(folder.Read("out/" + name), folder.Read("in/" + name));
        EXPECT_NE(theirs.UnzipItem(orvcore::AsUTF8(name)), nullptr) << theirs.GetLastFailure().Message();
    }
    ASSERT_TRUE(RunIn(folder / "in", GetParam().stream));
    const ZipFile streamed(folder / "theirs.zip");
    EXPECT_THAT(streamed.Check(true), testing::IsEmpty());
    ASSERT_TRUE(ZipFile(folder / "ours.zip").Zip(folder / "in", {}, nullptr));
    EXPECT_TRUE(RunIn(folder / "in", GetParam().test)) << folder.Read("out.log");
    folder.Write("in/definition.json", "changed");
    ASSERT_TRUE(streamed.AddItem(u8"definition.json", folder / "in", true)) << streamed.GetLastFailure().Message();
    fs::rename(folder / "theirs.zip", folder / "ours.zip");
    EXPECT_TRUE(RunIn(folder / "in", GetParam().test)) << folder.Read("out.log");
}

INSTANTIATE_TEST_SUITE_P(
    Programs, ZipOthers,
    testing::Values(Program{"zip", "zip -qr ../theirs.zip .", "unzip -tq ../ours.zip",
                            "(zip -qr - . | cat >../theirs.zip)"},
                    Program{"7z", "7z a -bd -tzip ../theirs.zip .", "7z t -bd ../ours.zip"},
                    Program{"bsdtar", "bsdtar -cf ../theirs.zip --format zip *", "bsdtar -tvf ../ours.zip",
                            "(bsdtar -cf - --format zip * | cat >../theirs.zip)"},
                    Program{"python3", "python3 -m zipfile -c ../theirs.zip *", "python3 -m zipfile -t ../ours.zip"}),
    [](const auto& tested) { return std::string(tested.param.name); });

// One wrong password in 256 opens an entry encrypted in the old way.
TEST(ZipOthers, AWrongPasswordIsNotTakenForDamage)
{
    const TempFolder folder;
    folder.Write("in/a", std::string(3000, 'x'));
    if (!RunIn(folder / "in", "zip -q -P secret ../a.zip a")) {
        GTEST_SKIP() << "zip is not installed";
    }
    EXPECT_NE(ZipFile(folder / "a.zip", "secret").UnzipItem(u8"a"), nullptr);
    for (int i = 0; i < 2000; ++i) {
        const ZipFile zip(folder / "a.zip", std::to_string(i));
        EXPECT_EQ(zip.UnzipItem(u8"a"), nullptr);
        ASSERT_EQ(NameOf(zip.GetLastFailure().error), NameOf(ZipError::WrongPassword)) << i;
    }
}

TEST(ZipLarge, Zip64RecordsAreRead)
{
    const TempFolder folder;
    folder.Write("a.zip", ZipBytes()
                              .Add({.name = "plain", .data = "1"})
                              .Add({.name = "definition.json", .data = "{}", .zip64 = true})
                              .Finish64());
    const ZipFile zip(folder / "a.zip");
    EXPECT_NE(zip.UnzipItem(u8"definition.json"), nullptr) << zip.GetLastFailure().Message();
    EXPECT_TRUE(zip.Check(true).empty());
}

TEST(ZipLarge, MoreEntriesThanTheOldFormatCounts)
{
    ZipBytes bytes;
    for (int i = 0; i < 70000; ++i) {
        bytes.Add({.name = std::to_string(i)});
    }
    const TempFolder folder;
    folder.Write("zip64.zip", bytes.Finish64());
    folder.Write("modulo.zip", bytes.Finish()); // as some writers leave it
    for (const char* name : {"zip64.zip", "modulo.zip"}) {
        ZipFile zip(folder / name);
        EXPECT_EQ(zip.GetEntries().size(), 70000U);
        EXPECT_TRUE(zip.Check(false).empty());
        zip.SetLimits({.maxEntries = 69999});
        EXPECT_EQ(zip.GetEntries().size(), 0U);
        EXPECT_EQ(zip.GetLastFailure().error, ZipError::TooManyEntries);
    }
}

// Writes 9 GiB to the temporary folder; set ORV_LARGE_TESTS to run it.
TEST(ZipLarge, EntriesAndArchivesBeyondFourGibibytes)
{
    if (std::getenv("ORV_LARGE_TESTS") == nullptr) {
        GTEST_SKIP() << "ORV_LARGE_TESTS is not set";
    }
    constexpr std::uint64_t kSize = (std::uint64_t{4} << 30) + 12345;
    const TempFolder folder;
    folder.Write("in/definition.json", "{}");
    for (const char* name : {"in/film.mp4", "in/data.bin"}) { // one stored, one deflated
        folder.Write(name, "begin");
        fs::resize_file(folder / name, kSize);
    }
    folder.Write("in/thumb.png", "behind the large ones");
    ZipFile zip(folder / "large.zelt");
    ASSERT_TRUE(zip.Zip(folder / "in", {}, nullptr)) << zip.GetLastFailure().Message();
    EXPECT_FALSE(zip.UnZip(folder / "out", true));
    EXPECT_EQ(zip.GetLastFailure().error, ZipError::RatioTooHigh); // zeros are what a bomb is made of
    zip.SetLimits({.maxRatio = 2000});
    ASSERT_TRUE(zip.UnZip(folder / "out", true)) << zip.GetLastFailure().Message();
    EXPECT_EQ(fs::file_size(folder / "out/film.mp4"), kSize);
    EXPECT_EQ(fs::file_size(folder / "out/data.bin"), kSize);
    EXPECT_EQ(folder.Read("out/thumb.png"), "behind the large ones");
}

} // namespace
