#include <orvcore/text/shared/TextFold.h>

#include <gtest/gtest.h>

#include <chrono>
#include <random>

namespace {

TEST(TextFold, SpellingsOfOneWordAreEqual)
{
    struct Case {
        std::u8string_view text;
        std::u8string_view folded;
    };
    const Case cases[] = {
        {u8"", u8""},
        {u8"Lower Third", u8"lower third"},
        {u8"Økland", u8"okland"},
        {u8"PAWEŁ Łódź", u8"pawel lodz"},
        {u8"Straße STRASSE ẞ", u8"strasse strasse ss"},
        {u8"ＡＢＣ　１", u8"abc 1"},
        {u8"e\u0301té \u00C9T\u00C9", u8"ete ete"},
        {u8"İstanbul ISPARTA ılık", u8"istanbul isparta ilik"},
        {u8"Ærø Œuvre Þór Ŋ", u8"aero oeuvre thor ng"},
        {u8"ΣΊΣΥΦΟΣ ς", u8"σισυφοσ σ"},
        {u8"Ёлка Й", u8"елка и"},
        {u8"ガラス", u8"ガラス"},                 // glass, which is not カラス, a crow
        {u8"ｶﾞﾗｽ", u8"ガラス"},                   // half width
        {u8"か\u3099", u8"が"},                   // a mark of its own
        {u8"\u1112\u1161\u11AB", u8"한"},         // Hangul letters form their syllable
        {u8"कि", u8"कि"},                         // a vowel sign is no accent
        {u8"عُنْوَان", u8"عنوان"},                   // vowel points
        {u8"so\u00ADft\u200D \uFEFF", u8"soft "}, // invisible characters
        {u8"ﬁlm ①", u8"film 1"},
        {u8"100% \"a\\b\" _*-", u8"100% \"a\\b\" _*-"},
        {u8"\u0301", u8""},
        {u8"😀", u8"😀"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(orvcore::FoldText(c.text), c.folded) << orvcore::AsNarrow(c.text);
        EXPECT_EQ(orvcore::FoldText(orvcore::ToUTF16(c.text)), c.folded) << orvcore::AsNarrow(c.text);
    }
}

TEST(TextFold, FoldingTwiceChangesNothingAndTheResultIsWellFormed)
{
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        std::u16string text;
        for (int k = 0; k < 6; ++k) {
            text += static_cast<char16_t>(random() % 0x10000); // lone surrogates included
        }
        const std::u8string once = orvcore::FoldText(text);
        ASSERT_TRUE(orvcore::IsWellFormedUTF8(orvcore::AsNarrow(once)));
        ASSERT_EQ(orvcore::FoldText(once), once) << orvcore::ToNarrow(text);
    }
}

TEST(TextFold, ATextOfMarksAloneTakesNoTime)
{
    std::u16string marks;
    for (int i = 0; i < 200000; ++i) {
        marks += u"\u3099\u0E38\u0F71"; // combining classes that must be sorted, none of them dropped
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(orvcore::FoldText(marks).empty());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60)); // quadratic time takes minutes
}

TEST(TextFold, LowerCaseKeepsAccentsAndWidth)
{
    EXPECT_EQ(orvcore::ToLowerCase(u"ÉTÉ Łódź ＡＢＣ ΣΑΣ \xD801\xDC00 字"), u"été łódź ａｂｃ σασ \xD801\xDC28 字");
}

TEST(TextFold, WordsBeginAfterSpacesAndAtEveryUnspacedLetter)
{
    struct Case {
        std::u8string_view before;
        std::u8string_view after;
        bool starts;
    };
    const Case cases[] = {
        {u8"", u8"a", true},    {u8"lower ", u8"third", true}, {u8"low", u8"er", false}, {u8"a-", u8"b", true},
        {u8"#", u8"b", true},   {u8"é", u8"t", false},         {u8"字", u8"幕", true},   {u8"字", u8"a", false},
        {u8"a", u8" b", false}, {u8"자", u8"막", false},       {u8"3", u8"d", false},    {u8"x", u8"", false},
    };
    for (const Case& c : cases) {
        const std::u8string text = std::u8string(c.before) + std::u8string(c.after);
        EXPECT_EQ(orvcore::IsWordStart(text, c.before.size()), c.starts) << orvcore::AsNarrow(text);
    }
}

} // namespace
