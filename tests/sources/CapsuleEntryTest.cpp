#include <sources/CapsuleEntry.h>
#include <sources/SourceNames.h>

#include <gtest/gtest.h>

namespace {

using orvcapsule::CapsuleEntry;

TEST(CapsuleEntry, IsOrderedByTheCodeUnitsOfItsName)
{
    const std::u16string_view ascending[] = {u"", u"B", u"a", u"abc", u"abcd", u"\xD83D\xDE00", u"\xFF21"};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t k = 0; k < std::size(ascending); ++k) {
            CapsuleEntry left;
            CapsuleEntry right;
            left.name = ascending[i];
            right.name = ascending[k];
            EXPECT_EQ(left < right, i < k) << i << " " << k;
        }
    }
}

TEST(CapsuleEntry, EqualityLooksAtPathAndThumbnailOnly)
{
    CapsuleEntry entry;
    entry.path = u8"/t/a.zelt";
    entry.thumbnailPath = u8"/tmp/a.png";
    CapsuleEntry other = entry;
    other.name = u"another name";
    other.capsuleID = u"another id";
    EXPECT_TRUE(entry == other);
    other.thumbnailPath = u8"/tmp/b.png";
    EXPECT_FALSE(entry == other);
    other = entry;
    other.path = u8"/t/A.zelt";
    EXPECT_FALSE(entry == other);
}

TEST(CapsuleEntry, SourcePathTellsSourceAndLibrary)
{
    struct Case {
        std::vector<std::string> sourcePath;
        std::string source;
        std::string library;
    };
    const Case cases[] = {
        {{}, "", ""},
        {{"graphicsource.local"}, "graphicsource.local", ""},
        {{"graphicsource.local", "graphicsource.local.default"}, "graphicsource.local", ""},
        {{"graphicsource.LumoLibraries"}, "graphicsource.LumoLibraries", ""},
        {{"graphicsource.LumoLibraries", "lib-1"}, "graphicsource.LumoLibraries", "lib-1"},
    };
    for (const Case& c : cases) {
        CapsuleEntry entry;
        entry.sourcePath = c.sourcePath;
        EXPECT_EQ(entry.GetSourceID(), c.source);
        EXPECT_EQ(entry.GetLibraryID(), c.library);
    }
}

TEST(CapsuleEntry, OnlyTheExactIdentifierMakesATesselTemplate)
{
    for (const char16_t* author : {u"", u"TSFX", u"tsfx2", u"crvd", u"tsf"}) {
        CapsuleEntry entry;
        entry.authorApp = author;
        EXPECT_EQ(entry.GetCreatorApp(), CapsuleEntry::CreatorApp::Other);
    }
    CapsuleEntry entry;
    EXPECT_TRUE(entry.modified.is_not_a_date_time());
    entry.authorApp = u"tsfx";
    EXPECT_EQ(entry.GetCreatorApp(), CapsuleEntry::CreatorApp::Tessel);
    EXPECT_FALSE(entry.SupportVideoPlayback());
    entry.videoPreviewPath = u8"/tmp/a.mp4";
    EXPECT_TRUE(entry.SupportVideoPlayback());
    EXPECT_EQ(entry.GetVideoPreviewPath(), u8"");
}

} // namespace
