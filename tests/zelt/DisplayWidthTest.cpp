#include <tools/support/DisplayWidth.h>

#include <gtest/gtest.h>

namespace {

TEST(DisplayWidth, OnATerminal)
{
    const std::pair<std::string_view, std::size_t> cases[] = {
        {"", 0},
        {"plain", 5},
        {"Økland", 6},
        {"字幕ｶﾞＡ", 8},
        {"e\u0301\u200D\uFE0F", 1},
        {"\u0915\u094D\u0937\u0730", 2},       // marks of scripts without accents
        {"⚓♿🎬❖", 7},                           // emoji, and a sign that only stands among them
        {"\uD55C\u1112\u1161\u11AB", 4},       // a syllable, and the same decomposed
        {"a\xE5\xAD|\xFF\xF4\x90\x80\x80", 9}, // bytes that are not UTF-8
    };
    for (const auto& [text, width] : cases) {
        EXPECT_EQ(orvtools::DisplayWidth(text), width) << text;
    }
}

} // namespace
