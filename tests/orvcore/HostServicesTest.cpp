#include <orvcore/host/Application.h>
#include <orvcore/host/DebugSettings.h>
#include <orvcore/host/Localiser.h>
#include <orvcore/host/shared/Environment.h>
#include <orvcore/text/shared/HashMixer.h>

#include <gtest/gtest.h>

#include <set>

namespace {

using orvcore::DebugSettings;
using orvcore::HashMixer;
using orvcore::Localiser;

class LocaliserTest : public testing::Test {
protected:
    void SetUp() override
    {
        EXPECT_EQ(Localiser::LoadDictionary("de", "\xEF\xBB\xBF# Deutsch\r\n"
                                                  "$$$/Area/Both=allgemein\r\n"
                                                  "\r\n"
                                                  "$$$/Area/Folder=Ordner @0 wird geladen\n"
                                                  "$$$/Area/Lines=eins\\nzwei\\\\drei=vier\n"
                                                  "not an entry\n"
                                                  "$$$/Area/NoText"),
                  2U);
        EXPECT_EQ(Localiser::LoadDictionary("de_AT", "$$$/Area/Both=Jänner"), 0U);
    }
    void TearDown() override
    {
        Localiser::UnloadDictionary("de");
        Localiser::UnloadDictionary("de_AT");
        orvcore::Application::SetLanguage("en_US");
    }
};

TEST_F(LocaliserTest, FindsTheNearestTextAndPutsArgumentsIn)
{
    struct Case {
        const char* language;
        const char* key;
        std::u8string_view expected;
    };
    const Case cases[] = {
        {"en_US", "$$$/Area/Both=Both", u8"Both"},
        {"de_AT", "$$$/Area/Both=Both", u8"Jänner"},
        {"de_DE", "$$$/Area/Both=Both", u8"allgemein"},
        {"de_AT", "$$$/Area/Folder=Loading @0", u8"Ordner a@1b wird geladen"},
        {"de", "$$$/Area/Lines=", u8"eins\nzwei\\drei=vier"},
        {"en_US", "$$$/Area/Order=@1, @0 and @2 @x @", u8"second, a@1b and @2 @x @"},
        {"en_US", "$$$/Area/Equals=a=b", u8"a=b"},
        {"en_US", "$$$/Area/Missing", u8"$$$/Area/Missing"},
        {"en_US", "plain @0", u8"plain a@1b"},
        {"", "", u8""},
    };
    for (const Case& c : cases) {
        orvcore::Application::SetLanguage(c.language);
        EXPECT_EQ(Localiser::Resolve(c.key, {u8"a@1b", u8"second"}), c.expected) << c.language << " " << c.key;
    }
}

TEST(DebugSettings, HostComesBeforeEnvironmentComesBeforeDefault)
{
    DebugSettings::SetText("ORV.test.number", u8"12x");
    EXPECT_EQ(DebugSettings::GetInt("ORV.test.number", 5), 5) << "not a number";
    EXPECT_EQ(DebugSettings::GetText("ORV.test.number", u8""), u8"12x");
    DebugSettings::SetInt("ORV.test.number", -7000000000);
    EXPECT_EQ(DebugSettings::GetInt("ORV.test.number", 5), -7000000000);
    DebugSettings::Unset("ORV.test.number");
    EXPECT_EQ(DebugSettings::GetInt("ORV.test.number", 5), 5);
    EXPECT_EQ(DebugSettings::GetText("PATH", u8"unset"), u8"unset") << "only the library's own variables are read";

    if (!orvcore::ReadEnvironment("ORV_TEST_SETTING")) {
        GTEST_SKIP() << "CTest sets ORV_TEST_SETTING to 17";
    }
    EXPECT_EQ(DebugSettings::GetInt("ORV.test.setting", 5), 17);
    DebugSettings::SetInt("ORV.test.setting", 3);
    EXPECT_EQ(DebugSettings::GetInt("ORV.test.setting", 5), 3);
    DebugSettings::Unset("ORV.test.setting");
    EXPECT_EQ(DebugSettings::GetInt("ORV.test.setting", 5), 17);
}

TEST(HashMixer, IsTheSameOnEverySystemAndTellsPiecesApart)
{
    // The empty XXH3-128, from the algorithm's own published vectors.
    EXPECT_EQ(HashMixer().GetResult().ToString(), "99aa06d3-0147-98d8-6001-c324468d497f");
    const std::string longText(1000, 'x');
    EXPECT_EQ(HashMixer().AddBytes(longText.data(), 1000).GetResult(),
              HashMixer().AddBytes(longText.data(), 1).AddBytes(longText.data() + 1, 999).GetResult());
    EXPECT_EQ(HashMixer().AddBytes(longText.data(), 1000).GetResult(), HashMixer::Of({longText.data(), 1000}));

    std::set<std::string> results;
    const auto remember = [&results](const HashMixer& mixer) {
        EXPECT_TRUE(results.insert(mixer.GetResult().ToString()).second);
    };
    remember(HashMixer().Add("ab").Add("c"));
    remember(HashMixer().Add("a").Add("bc"));
    remember(HashMixer().Add(u"ab").Add(u"c"));
    remember(HashMixer().Add(u"a").Add(u"bc"));
    remember(HashMixer().Add("").Add("abc"));
    remember(HashMixer().Add(std::uint64_t{0x0102030405060708}));
    remember(HashMixer().Add(std::uint64_t{0x0807060504030201}));
    EXPECT_EQ(HashMixer().Add(u"Ā").GetResult(), HashMixer().Add(std::uint64_t{1}).AddBytes("\x00\x01", 2).GetResult());
}

} // namespace
