#include <orvstorage/ZipFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>
#include <tests/support/ZipBytes.h>

namespace {

namespace fs = std::filesystem;
using orvstorage::ZipError;
using namespace std::string_literals;
using orvstorage::ZipFile;
using orvstorage::ZipLimits;
using test::TempFolder;
using test::ZipBytes;
using test::ZipItem;
using testing::ElementsAre;
using testing::HasSubstr;

std::string Text(const orvstorage::ZipBuffer& buffer)
{
    return buffer ? std::string(buffer->begin(), buffer->end()) : "(null)";
}

TEST(ZipRead, EveryRefusedEntryHasItsReasonAndLeavesTheOthersAlone)
{
    const std::uint32_t link = 0120777U << 16;
    const std::uint32_t device = 0020666U << 16;
    const auto aes = [](std::uint64_t size, const std::string& content) {
        const std::string field = ZipBytes::Number(0x9901, 2) + ZipBytes::Number(size, 2) + content;
        return ZipItem{.name = "aes", .data = "x", .method = 99, .flags = 0x0801, .extra = size == 0 ? "" : field};
    };
    const struct {
        ZipItem bad;
        ZipError error;
    } cases[] = {
        {{.name = "../out", .data = "x"}, ZipError::ParentComponent},
        {{.name = "/abs", .data = "x"}, ZipError::AbsoluteName},
        {{.name = "C:\\x", .data = "x", .system = 0}, ZipError::DriveLetter},
        {{.name = "..\\out", .data = "x", .system = 10}, ZipError::ParentComponent},
        {{.name = "a\\b", .data = "x"}, ZipError::ReservedCharacter},
        {{.name = std::string("good\0bad", 8), .data = "x"}, ZipError::ControlCharacter},
        {{.name = "good\x01\u5b57", .data = "x"}, ZipError::ControlCharacter},
        {{.name = "good\x1f", .data = "x", .flags = 0}, ZipError::ControlCharacter},
        {{.name = "packed", .data = "x", .method = 12}, ZipError::CompressionUnsupported},
        {{.name = "packed", .data = "x", .method = 97}, ZipError::CompressionUnsupported},
        {aes(0, ""), ZipError::EncryptionUnsupported},
        {aes(6, "\1\0AE\1\0"s), ZipError::EncryptionUnsupported},
        {aes(8, "\1\0AE\1\0\0\0"s), ZipError::EncryptionUnsupported},
        {aes(7, "\3\0AE\1\0\0"s), ZipError::EncryptionUnsupported},
        {aes(7, "\1\0AF\1\0\0"s), ZipError::EncryptionUnsupported},
        {aes(7, "\1\0AE\4\0\0"s), ZipError::EncryptionUnsupported},
        {aes(7, "\1\0AE\3\x61\0"s), ZipError::CompressionUnsupported},
        {{.name = "con.png", .data = "x"}, ZipError::ReservedName},
        {{.name = "GOOD/ONE", .data = "x"}, ZipError::NameClash},
        {{.name = "good/one/deeper", .data = "x"}, ZipError::NameClash},
        {{.name = "link", .data = "/etc/passwd", .attributes = link}, ZipError::SymbolicLink},
        {{.name = "link", .data = "/etc/passwd", .system = 10, .attributes = 0x400}, ZipError::SymbolicLink},
        {{.name = "device", .data = "x", .attributes = device}, ZipError::SpecialFile},
        {{.name = "beyond", .data = "x", .declaredPacked = 1 << 20}, ZipError::DataOutsideArchive},
        {{.name = "shared", .data = "xyz", .offset = 2}, ZipError::OverlappingEntries},
    };
    for (const auto& c : cases) {
        TempFolder folder;
        folder.Write("a.zip", ZipBytes()
                                  .Add({.name = "first", .data = std::string(100, '1')})
                                  .Add({.name = "good/one", .data = "1"})
                                  .Add(c.bad)
                                  .Add({.name = "good/two", .data = "2"})
                                  .Finish());
        const ZipFile zip(folder / "a.zip");
        EXPECT_FALSE(zip.UnZip(folder / "in/out", true));
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error)) << zip.GetLastFailure().Message();
        if (c.error != ZipError::OverlappingEntries) {
            EXPECT_THAT(folder.Names(), ElementsAre("a.zip", "in/out/first", "in/out/good/one", "in/out/good/two"))
                << NameOf(c.error);
            EXPECT_EQ(zip.Check(true).size(), 1U);
        }
        EXPECT_EQ(Text(zip.UnzipItem(u8"good/one")), "1");
        const std::string before = folder.Read("a.zip");
        if (!zip.AddItem(u8"first", folder / "in/out", true)) { // what is refused is copied as it was, or not at all
            EXPECT_EQ(folder.Read("a.zip"), before);
        }
        if (c.error != ZipError::NameClash) {
            const auto name = zip.GetEntries().at(2).name;
            EXPECT_EQ(zip.UnzipItem(name), nullptr);
            EXPECT_FALSE(zip.UnzipItems(name, folder / "single"));
            EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error));
            EXPECT_FALSE(orvcore::Exists(folder / "single"));
        }
    }
}

TEST(ZipRead, ArchivesThatAreNoneSayWhy)
{
    const std::string good = ZipBytes().Add({.name = "a", .data = "some data"}).Finish();
    std::string lying = good;
    lying.replace(lying.size() - 14, 2, ZipBytes::Number(900, 2)).replace(lying.size() - 12, 2, "\x84\3");
    std::string farDirectory = good;
    farDirectory.replace(farDirectory.size() - 6, 4, ZipBytes::Number(1U << 30, 4));
    std::string split = good;
    split.replace(split.size() - 18, 2, "\1\0", 2);
    std::string twoArchives = ZipBytes().Add({.name = "a"}).Finish64();
    twoArchives.replace(twoArchives.size() - 6, 4, ZipBytes::Number(0, 4));
    const struct {
        std::string bytes;
        ZipError error;
    } cases[] = {
        {"", ZipError::NotAZip},
        {"this is a text and no archive at all", ZipError::NotAZip},
        {good.substr(0, good.size() - 30), ZipError::Truncated},
        {good.substr(10), ZipError::Truncated},
        {farDirectory, ZipError::Truncated},
        {lying, ZipError::Inconsistent},
        {split, ZipError::SeveralDisks},
        {twoArchives, ZipError::Inconsistent},
        {"a program" + good, ZipError::Inconsistent},
        {ZipBytes().Add({.name = "a", .declaredSize = 0xffffffff}).Finish(), ZipError::Zip64FieldMissing},
        {ZipBytes().Add({.name = "bad\xff", .data = "x"}).Finish(), ZipError::BadEncoding},
        {ZipBytes().Add({.name = "a", .extra = std::string("\2\0\xff\xff more", 9)}).Finish(), ZipError::Inconsistent},
    };
    TempFolder folder;
    for (const auto& c : cases) {
        folder.Write("a.zip", c.bytes);
        const ZipFile zip(folder / "a.zip");
        EXPECT_EQ(zip.UnzipItem(u8"a"), nullptr);
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error));
        EXPECT_FALSE(zip.UnZip(folder / "out", true));
        EXPECT_FALSE(orvcore::Exists(folder / "out"));
        EXPECT_EQ(zip.Check(true).size(), 1U);
    }
    const ZipFile missing(folder / "none.zip");
    EXPECT_EQ(missing.UnzipItem(u8"a"), nullptr);
    EXPECT_THAT(missing.GetLastFailure().Message(), HasSubstr("none.zip\": there is no such file"));
}

TEST(ZipRead, DamagedContentFailsTheWholeCallAndLeavesNothing)
{
    const struct {
        ZipItem bad;
        ZipError error;
    } cases[] = {
        {{.name = "bad", .data = "x", .crc = 1}, ZipError::ChecksumMismatch},
        {{.name = "bad", .data = "\x07", .method = 8, .declaredSize = 3}, ZipError::DataCorrupt},
        {{.name = "bad", .data = "\x4b\x04\x00", .method = 8, .crc = 0xe8b7be43, .declaredSize = 9},
         ZipError::SizeMismatch},
        {{.name = "bad", .data = "x", .flags = 0x0801}, ZipError::PasswordNeeded},
    };
    for (const auto& c : cases) {
        TempFolder folder;
        folder.Write("kept/good", "older");
        folder.Write("a.zip",
                     ZipBytes().Add({.name = "good", .data = "1"}).Add({.name = "new/good"}).Add(c.bad).Finish());
        const ZipFile zip(folder / "a.zip");
        EXPECT_FALSE(zip.UnZip(folder / "kept", true));
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error)) << zip.GetLastFailure().Message();
        EXPECT_FALSE(zip.UnZip(folder / "fresh/deep", true));
        EXPECT_FALSE(zip.UnzipItems(u8"bad", folder / "made/deep/single"));
        EXPECT_EQ(zip.UnzipItem(u8"bad"), nullptr);
        EXPECT_THAT(folder.Names(), ElementsAre("a.zip", "kept/good"));
        EXPECT_EQ(folder.Read("kept/good"), "older");
        EXPECT_EQ(Text(zip.UnzipItem(u8"good")), "1");
        EXPECT_EQ(zip.Check(false).size(), 0U);
        EXPECT_EQ(zip.Check(true).size(), 1U);
    }
}

TEST(ZipRead, HeadersAtTheDataAgreeWithTheDirectory)
{
    const ZipItem plain{.name = "a.txt", .data = "content"};
    const std::string sizes = ZipBytes::Number(7, 4) + ZipBytes::Number(7, 4);
    const std::string sizes64 = ZipBytes::Number(1, 2) + ZipBytes::Number(16, 2) + ZipBytes::Number(9, 8) +
                                ZipBytes::Number(7, 8); // of which the header asks for the second
    const std::string signedCrc = "PK\7\x8" + ZipBytes::Number(test::Crc32("content"), 4);
    const auto streamed = [](const std::string& behind) {
        return ZipItem{.name = "a.txt",
                       .data = "content" + behind,
                       .flags = 0x0808,
                       .crc = test::Crc32("content"),
                       .declaredSize = 7,
                       .declaredPacked = 7};
    };
    const struct {
        ZipItem item;
        std::size_t at; ///< where the header is changed
        std::string bytes;
        ZipError error = ZipError::HeaderMismatch;
    } cases[] = {
        {plain, 0, "PK\3\5"},
        {plain, 30, "b"},
        {plain, 26, "\6"},
        {plain, 8, "\x8"},
        {plain, 6, "\1"},
        {plain, 14, "?"},
        {plain, 18, "\x8"},
        {plain, 22, "\x8"},
        {plain, 18, std::string(8, '\xff')},
        {plain, 28, "\xff", ZipError::OverlappingEntries},
        {{.name = "\u5b57", .data = "content"}, 7, std::string(1, '\0')},
        {streamed(""), 18, "\x8"},
        {streamed("PK\7\x8" + ZipBytes::Number(1, 4) + sizes), 0, ""},
        {streamed(signedCrc + ZipBytes::Number(7, 4) + ZipBytes::Number(8, 4)), 0, ""},
        // What real writers leave.
        {plain, 6, "\2", ZipError::None},
        {plain, 7, std::string(1, '\0'), ZipError::None},
        {{.name = "a.txt", .data = "content", .extra = sizes64}, 18, std::string(4, '\xff'), ZipError::None},
        {streamed(""), 14, std::string(12, '\0'), ZipError::None},
        {streamed(""), 14, std::string(4, '\0') + std::string(8, '\xff'), ZipError::None},
        {streamed(signedCrc + sizes), 14, std::string(12, '\0'), ZipError::None},
        {streamed(signedCrc + ZipBytes::Number(7, 8) + ZipBytes::Number(7, 8)), 0, "", ZipError::None},
        {streamed(ZipBytes::Number(test::Crc32("content"), 4) + sizes), 14, std::string(12, '\0'), ZipError::None},
    };
    const TempFolder folder;
    for (const auto& c : cases) {
        std::string bytes = ZipBytes().Add(c.item).Finish();
        folder.Write("a.zip", bytes.replace(c.at, c.bytes.size(), c.bytes));
        const ZipFile zip(folder / "a.zip");
        EXPECT_EQ(Text(zip.UnzipItem(orvcore::AsUTF8(c.item.name))), c.error == ZipError::None ? "content" : "(null)");
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error)) << &c - cases;
        EXPECT_EQ(zip.Check(true).size(), c.error == ZipError::None ? 0U : 1U);
    }
}

TEST(ZipRead, FoldersAndEmptyEntriesAreCheckedToo)
{
    const struct {
        ZipItem item;
        ZipError error;
        const char* name = nullptr; ///< in the directory, when it is another
    } cases[] = {
        {{.name = "folder/"}, ZipError::None},
        {{.name = "folder/", .data = std::string("\3\0", 2), .method = 8, .crc = 0, .declaredSize = 0}, ZipError::None},
        {{.name = "folder/", .data = "x"}, ZipError::None},
        {{.name = "folder/", .data = "x", .crc = 1}, ZipError::ChecksumMismatch},
        {{.name = "folder/"}, ZipError::HeaderMismatch, "folde2/"},
        {{.name = "empty", .crc = 1}, ZipError::ChecksumMismatch},
    };
    const TempFolder folder;
    for (const auto& c : cases) {
        std::string bytes = ZipBytes().Add(c.item).Finish();
        if (c.name != nullptr) {
            bytes.replace(bytes.rfind(c.item.name), c.item.name.size(), c.name);
        }
        folder.Write("a.zip", bytes);
        const std::vector<orvstorage::ZipFailure> found = ZipFile(folder / "a.zip").Check(true);
        ASSERT_EQ(found.size(), c.error == ZipError::None ? 0U : 1U) << &c - cases;
        EXPECT_EQ(found.empty() ? ZipError::None : found.front().error, c.error) << &c - cases;
    }
}

TEST(ZipRead, AnEntryReachesOverSeveralOthers)
{
    const TempFolder folder;
    folder.Write("a.zip", ZipBytes()
                              .Add({.name = "a", .data = "1", .declaredPacked = 40}) // to the middle of "c"
                              .Add({.name = "b", .data = "2"})
                              .Add({.name = "c", .data = "3"})
                              .Add({.name = "d", .data = "4"})
                              .Finish());
    const ZipFile zip(folder / "a.zip");
    for (const char8_t* name : {u8"a", u8"b", u8"c"}) {
        EXPECT_EQ(zip.UnzipItem(name), nullptr);
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(ZipError::OverlappingEntries));
    }
    EXPECT_EQ(Text(zip.UnzipItem(u8"d")), "4");
}

TEST(ZipRead, WhatStandsInADirectoryIsNotTakenForItsEnd)
{
    const TempFolder folder;
    folder.Write("in/c", "3");
    const std::string locator = "PK\6\7" + std::string(16, '\1');
    for (const char* last : {"\u5b57", "b"}) {
        folder.Write("a.zip", ZipBytes()
                                  .Add({.name = "a", .data = "1"})
                                  .Add({.name = last, .data = "2", .comment = "\1\xff" + locator})
                                  .Finish("of the archive"));
        const ZipFile zip(folder / "a.zip");
        EXPECT_TRUE(zip.Check(true).empty());
        EXPECT_EQ(Text(zip.UnzipItem(orvcore::AsUTF8(last))), "2") << zip.GetLastFailure().Message();
        EXPECT_TRUE(zip.AddItem(u8"c", folder / "in", false)) << zip.GetLastFailure().Message();
        EXPECT_THAT(folder.Read("a.zip"), HasSubstr(locator));
        EXPECT_TRUE(folder.Read("a.zip").ends_with("of the archive"));
        EXPECT_EQ(zip.GetEntries().size(), 3U);
    }
}

TEST(ZipRead, LimitsAreHeldBeforeAnythingIsWritten)
{
    const struct {
        ZipLimits limits;
        ZipError error;
    } cases[] = {
        {{.maxEntries = 2}, ZipError::TooManyEntries},
        {{.maxDirectorySize = 100}, ZipError::DirectoryTooLarge},
        {{.maxEntrySize = 999}, ZipError::EntryTooLarge},
        {{.maxTotalSize = 2001}, ZipError::TotalTooLarge},
        {{.maxFolders = 4}, ZipError::TooManyEntries},
        {{.maxDepth = 4}, ZipError::TooDeep},
        {{.maxRatio = 30, .ratioFloor = 1000}, ZipError::RatioTooHigh},
        {{.maxRatio = 30, .ratioFloor = 1001}, ZipError::RatioTooHigh}, // of both together
    };
    for (const auto& c : cases) {
        TempFolder folder;
        // 1000 zeros, deflated by hand: a stored zero, a match of length 258 three times, of 225 once.
        const std::string zeros("\x63\x60\x18\x05\xa3\x60\x14\x0c\x77\x00\x00", 11);
        folder.Write("a.zip", ZipBytes()
                                  .Add({.name = "1", .data = "1"})
                                  .Add({.name = "zeros", .data = zeros, .method = 8, .declaredSize = 1000})
                                  .Add({.name = "more", .data = zeros, .method = 8, .declaredSize = 1000})
                                  .Add({.name = "2", .data = "2"})
                                  .Add({.name = "f/g/h/i/j/"})
                                  .Finish());
        ZipFile zip(folder / "a.zip");
        zip.SetLimits(c.limits);
        EXPECT_FALSE(zip.UnZip(folder / "out", true));
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error));
        EXPECT_THAT(folder.Names(), ElementsAre("a.zip"));
    }
}

TEST(ZipRead, HeadersAreNotBelievedForMemory)
{
    TempFolder folder;
    ZipItem liar{.name = "huge", .data = "few bytes"};
    liar.declaredSize = 200LL << 20;
    liar.zip64 = true;
    folder.Write("a.zip", ZipBytes().Add(liar).Finish());
    ZipFile zip(folder / "a.zip");
    EXPECT_EQ(zip.UnzipItem(u8"huge"), nullptr);
    EXPECT_NE(zip.GetLastFailure().error, ZipError::EntryTooLarge);
    zip.SetLimits({.maxItemSize = 1 << 20});
    EXPECT_EQ(zip.UnzipItem(u8"huge"), nullptr);
    EXPECT_EQ(zip.GetLastFailure().error, ZipError::EntryTooLarge);
}

TEST(ZipRead, NamesAreExactAndRepeatedOnesTrustedForNothing)
{
    TempFolder folder;
    folder.Write("a.zip", ZipBytes()
                              .Add({.name = "Win\\dows\\file", .data = "w", .system = 0})
                              .Add({.name = "twice", .data = "1"})
                              .Add({.name = "twice", .data = "2"})
                              .Add({.name = "empty"})
                              .Finish());
    const ZipFile zip(folder / "a.zip");
    EXPECT_EQ(Text(zip.UnzipItem(u8"Win/dows/file")), "w");
    EXPECT_EQ(Text(zip.UnzipItem(u8"win/dows/file")), "(null)");
    EXPECT_EQ(Text(zip.UnzipItem(std::u8string_view(u8"empty\0x", 7))), "(null)");
    EXPECT_EQ(Text(zip.UnzipItem(u8"empty")), "");
    EXPECT_EQ(Text(zip.UnzipItem(u8"twice")), "(null)");
    EXPECT_TRUE(zip.Contains(u8"empty"));
    EXPECT_FALSE(zip.Contains(u8"none"));
    EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(ZipError::DuplicateName)) << "as it was before";
    EXPECT_FALSE(zip.UnZip(folder / "out", true));
    EXPECT_THAT(folder.Names(), ElementsAre("a.zip", "out/Win/dows/file", "out/empty"));
}

TEST(ZipRead, AFailureAtAnyStepPutsBackWhatWasReplaced)
{
    const std::vector<std::string> files = {"new/deep/x", "a", "sub/b", "c"};
    ZipBytes bytes;
    for (const std::string& file : files) {
        bytes.Add({.name = file, .data = "new"});
    }
    bytes.Add({.name = "made/deep/"});
    for (const std::string bad : {"new/deep/x", "a", "sub/b", "c", "made"}) {
        const TempFolder folder;
        folder.Write("a.zip", bytes.Finish());
        for (const char* file : {"a", "sub/b", "c"}) {
            if (file != bad) {
                folder.Write(fs::path("out") / file, "old");
            }
        }
        // A folder where a file is to go, or a file where a folder is.
        folder.Write("out/" + bad + (bad == "made" ? "" : "/inside"), "old");
        const auto before = folder.Names();
        const ZipFile zip(folder / "a.zip");
        EXPECT_FALSE(zip.UnZip(folder / "out", true));
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(ZipError::WriteFailed)) << bad;
        EXPECT_EQ(folder.Names(), before);
        for (const std::string& name : before) {
            EXPECT_TRUE(name == "a.zip" || folder.Read(name) == "old") << bad << ' ' << name;
        }
    }
}

TEST(ZipRead, CopiesShareOneOpenArchiveThatOutlivesTheFile)
{
    TempFolder folder;
    folder.Write("a.zip", ZipBytes().Add({.name = "a", .data = "1"}).Add({.name = "b", .data = "2"}).Finish());
    const ZipFile zip(folder / "a.zip");
    EXPECT_EQ(Text(zip.UnzipItem(u8"a")), "1");
    fs::remove(folder / "a.zip");
    const ZipFile copy = zip; // NOLINT(performance-unnecessary-copy-initialization): the copy is what is tested
    EXPECT_EQ(Text(copy.UnzipItem(u8"b")), "2");
}

} // namespace
