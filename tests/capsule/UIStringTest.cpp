#include <capsule/UIString.h>

#include <tests/support/Language.h>

#include <gtest/gtest.h>

namespace {

using orvcapsule::LocStrPair;
using orvcapsule::UIString;
using orvtest::Language;

TEST(UIString, ChoosesTheLanguageThenAmericanEnglishThenTheSmallestLocale)
{
    struct Case {
        const char* language;
        std::vector<LocStrPair> pairs;
        std::u16string expected;
    };
    const Case cases[] = {
        {"fr_FR", {{u"en_US", u"Title"}, {u"de_DE", u"Titel"}}, u"Title"},
        {"de_DE", {{u"en_US", u"Title"}, {u"de_DE", u"Titel"}}, u"Titel"},
        {"fr_FR", {{u"es_ES", u"Título"}, {u"de_DE", u"Titel"}}, u"Titel"},
        {"de_DE", {{u"en_US", u"Title"}, {u"de_DE", u""}}, u""}, // an empty text counts as found
        {"de_DE", {}, u""},
        {"en_US", {{u"en_US", u"first"}, {u"en_US", u"second"}}, u"second"},
    };
    for (const Case& c : cases) {
        const Language language(c.language);
        EXPECT_EQ(UIString(c.pairs).GetString(), c.expected) << c.language;
    }
}

TEST(UIString, DefaultBuiltHoldsOneEmptyTextOfTheLanguage)
{
    const Language language("ja_JP");
    EXPECT_EQ(UIString(), UIString(std::vector<LocStrPair>{{u"ja_JP", u""}}));
    EXPECT_TRUE(UIString(std::vector<LocStrPair>()).GetLocaleStrings().empty());
    EXPECT_EQ(UIString({}), UIString(std::vector<LocStrPair>()));
    EXPECT_NE(UIString(), UIString(std::vector<LocStrPair>()));
}

TEST(UIString, ATemporaryHandsItsTextsOver)
{
    std::u16string joined;
    for (auto& [locale, text] : UIString({{u"de_DE", u"Titel"}, {u"en_US", u"Title"}}).GetLocaleStrings()) {
        joined += locale + u' ' + text + u';';
    }
    EXPECT_EQ(joined, u"de_DE Titel;en_US Title;");
}

TEST(UIString, SettersTouchOneLocale)
{
    UIString text(std::vector<LocStrPair>{{u"en_US", u"Title"}});
    text.SetString(u"Titel", u"de_DE");
    const Language language("fr_FR");
    text.SetString(u"Titre");
    EXPECT_EQ(text,
              UIString(std::vector<LocStrPair>{{u"fr_FR", u"Titre"}, {u"de_DE", u"Titel"}, {u"en_US", u"Title"}}));
    EXPECT_NE(text,
              UIString(std::vector<LocStrPair>{{u"FR_FR", u"Titre"}, {u"de_DE", u"Titel"}, {u"en_US", u"Title"}}));
}

} // namespace
