#include <orvcore/text/Guid.h>
#include <orvcore/text/NearestName.h>
#include <orvcore/text/Printable.h>
#include <orvcore/text/Strings.h>

#include <gtest/gtest.h>

namespace {

TEST(Strings, WellFormedTextSurvivesBothWays)
{
    for (const std::u8string_view text :
         {std::u8string_view(u8""), std::u8string_view(u8"plain ASCII, long enough for blocks"),
          std::u8string_view(u8"字幕タイトル"), std::u8string_view(u8"a\0b", 3),
          std::u8string_view(u8"😀 Økland ß \U0010FFFF")}) {
        EXPECT_EQ(orvcore::ToUTF8(orvcore::ToUTF16(text)), text);
        EXPECT_TRUE(orvcore::IsWellFormedUTF8(orvcore::AsNarrow(text)));
    }
    EXPECT_EQ(orvcore::ToUTF16(u8"😀"), u"\xD83D\xDE00");
}

TEST(Strings, IllFormedUTF8BecomesOneReplacementABrokenCharacter)
{
    struct Case {
        std::string_view bytes;
        std::u16string_view expected;
    };
    const Case cases[] = {
        {"\x80", u"\xFFFD"},
        {"a\xC0\x80z", u"a\xFFFD\xFFFDz"},                 // overlong NUL
        {"\xED\xA0\x80", u"\xFFFD\xFFFD\xFFFD"},           // a surrogate
        {"\xF0\x9F\x98", u"\xFFFD"},                       // cut short at the end
        {"\xE5\xAD|", u"\xFFFD|"},                         // cut short by an ASCII letter
        {"\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"}, // above U+10FFFF
    };
    for (const Case& c : cases) {
        EXPECT_EQ(orvcore::ToUTF16(c.bytes), c.expected);
        EXPECT_FALSE(orvcore::IsWellFormedUTF8(c.bytes));
    }
}

TEST(Strings, WhatIsShownSteersNothing)
{
    const struct {
        std::string text;
        std::string shown;
    } cases[] = {
        {"a \u5b57 \u200f\U0001F3AC", "a \u5b57 \u200f\U0001F3AC"},
        {std::string("\0\n\x1b[2J\x7f", 7), "???[2J?"},
        {"\xc2\x80\xc2\x9b"
         "1m\xc2\xa0",
         "??1m\xc2\xa0"},
        {"\u2028\u202e"
         "gpj.exe\u2066\u206a",
         "??gpj.exe?\u206a"},
        {"\x9b\xe5\xad", "???"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(orvcore::Printable(c.text), c.shown);
    }
}

TEST(Strings, LoneSurrogatesBecomeReplacements)
{
    EXPECT_EQ(orvcore::ToUTF8(u"a\xD800z"), u8"a\uFFFDz");
    EXPECT_EQ(orvcore::ToUTF8(u"\xDC00\xD800"), u8"\uFFFD\uFFFD");
}

TEST(Guid, TextFormReadsBack)
{
    const orvcore::Guid guid = orvcore::Guid::Create();
    EXPECT_EQ(orvcore::Guid::FromString(guid.ToString()), guid);
    EXPECT_NE(orvcore::Guid::Create(), guid);
    const auto fixed = orvcore::Guid::FromString("{C8F55408-46ee-5461-8940-53cf87a7ab88}");
    ASSERT_TRUE(fixed);
    EXPECT_EQ(fixed->ToString(), "c8f55408-46ee-5461-8940-53cf87a7ab88");
    for (const char* bad : {"", "c8f55408-46ee-5461-8940-53cf87a7ab8", "c8f5540846ee-5461-8940-53cf87a7ab88-",
                            "g8f55408-46ee-5461-8940-53cf87a7ab88"}) {
        EXPECT_FALSE(orvcore::Guid::FromString(bad)) << bad;
    }
}

TEST(NearestName, IsWhatAMisspeltWordMeans)
{
    const std::vector<std::string> names = {"clientControls", "check", "set", "index search", std::string(65, 'x')};
    const std::pair<std::string, std::string> cases[] = {
        {"clientControl", "clientControls"},
        {"ClientContorls", "clientControls"},
        {"chekc", "check"},
        {"st", "set"},
        {"zet", "set"},
        {"index serch", "index search"},
        {"", ""},
        {"fonts", ""},
        {std::string(65, 'x'), ""},
    };
    for (const auto& [word, name] : cases) {
        EXPECT_EQ(orvcore::NearestName(word, names), name) << word;
    }
}

} // namespace
