#include <capsule/Capsule.h>
#include <capsule/ControlFactory.h>
#include <capsule/Guid.h>

#include <tests/support/Language.h>

#include <gtest/gtest.h>

namespace {

using orvcapsule::Capsule;
using orvtest::Language;

kinlet::SourceInfo Named(const char16_t* name)
{
    kinlet::SourceInfo info;
    info.name = name;
    return info;
}

TEST(Capsule, ConstructorsDifferInVersions)
{
    const Capsule empty;
    EXPECT_EQ(empty.GetAPIVersion(), "");
    EXPECT_EQ(empty.GetTslibCompliantVersion(), u"");

    const Capsule named(u"tsfx", u"Title", u"id");
    EXPECT_EQ(named.GetAPIVersion(), "2.2");
    EXPECT_EQ(named.GetDisplayName(), u"Title");
    EXPECT_EQ(named.GetCapsuleNameObsolete(), u"Title");
    for (const auto& marker :
         {named.GetTslibCompliantVersion(), named.GetMobileCompatibilityVersion(), named.GetInternalEffectsVersion(),
          named.GetFontwellOnlyVersion(), named.GetResponsiveDesignTimeVersion()}) {
        EXPECT_EQ(marker, u"0");
    }
}

TEST(Capsule, FullConstructorPutsEachArgumentInItsPlace)
{
    const Language language("de_DE");
    const Capsule capsule(u"app", u"author", u"name", u"id", u"desc", {"tsfx"}, Named(u"comp"), {nullptr}, {"Font"},
                          {"fx"}, {"renderer"}, {"png"}, {"tag"}, u"1", u"2", u"3", u"4");
    EXPECT_EQ(capsule.GetAuthorApp(), u"app");
    EXPECT_EQ(capsule.GetAuthorID(), u"author");
    EXPECT_EQ(capsule.GetCapsuleNameObsolete(), u"name");
    EXPECT_EQ(capsule.GetCapsuleID(), u"id");
    EXPECT_EQ(capsule.GetCapsuleDesc(), u"desc");
    EXPECT_EQ(capsule.GetPlatformSupport(), Capsule::StringList{"tsfx"});
    EXPECT_EQ(capsule.GetControls().size(), 1U);
    EXPECT_EQ(capsule.GetUsedEffects(), Capsule::StringList{"fx"});
    EXPECT_EQ(capsule.GetUsedCompRenderers(), Capsule::StringList{"renderer"});
    EXPECT_EQ(capsule.GetUsedFileTypes(), Capsule::StringList{"png"});
    EXPECT_EQ(capsule.GetTags(), Capsule::StringList{"tag"});
    EXPECT_EQ(capsule.GetTslibCompliantVersion(), u"1");
    EXPECT_EQ(capsule.GetMobileCompatibilityVersion(), u"2");
    EXPECT_EQ(capsule.GetInternalEffectsVersion(), u"3");
    EXPECT_EQ(capsule.GetFontwellOnlyVersion(), u"4");
    EXPECT_EQ(capsule.GetResponsiveDesignTimeVersion(), u"0");
    EXPECT_EQ(capsule.GetUsedFontsLocalized(), (Capsule::FontMap{{u"de_DE", {"Font"}}}));
    ASSERT_EQ(capsule.GetSourceInfoLocalized().size(), 1U);
    EXPECT_EQ(capsule.GetSourceInfoLocalized().at(u"de_DE").name, u"comp");
}

TEST(Capsule, CompositionFallsBackToAmericanEnglishAndFontsDoNot)
{
    struct Case {
        std::vector<std::u16string> locales;
        std::u16string composition;
        std::string font;
    };
    const Case cases[] = {
        {{u"fr_FR", u"en_US"}, u"en_US", "en_US"}, // "en_US" sorts before "fr_FR"
        {{u"fr_FR", u"de_DE"}, u"de_DE", "de_DE"},
        {{u"en_US", u"de_DE"}, u"en_US", "de_DE"},
        {{u"en_US", u"ja_JP"}, u"ja_JP", "ja_JP"},
    };
    const Language language("ja_JP");
    for (const Case& c : cases) {
        Capsule::SourceInfoMap compositions;
        Capsule::FontMap fonts;
        for (const auto& locale : c.locales) {
            compositions[locale] = Named(locale.c_str());
            fonts[locale] = {orvcore::ToNarrow(locale)};
        }
        Capsule capsule;
        capsule.SetSourceInfoVector(compositions);
        capsule.SetUsedFontsVector(fonts);
        EXPECT_EQ(capsule.GetSourceInfo().name, c.composition);
        EXPECT_EQ(capsule.GetUsedFonts(), Capsule::StringList{c.font});
    }
    EXPECT_EQ(Capsule().GetSourceInfo(), kinlet::SourceInfo());
    EXPECT_TRUE(Capsule().GetUsedFonts().empty());
}

TEST(Capsule, SettersOfOneLanguageLeaveTheOthers)
{
    Capsule capsule;
    capsule.SetSourceInfoVector({{u"fr_FR", Named(u"fr")}});
    capsule.SetUsedFontsVector({{u"fr_FR", {"fr"}}});
    const Language language("de_DE");
    capsule.SetSourceInfo(Named(u"de"));
    capsule.SetUsedFonts(Capsule::StringList{"de"});
    EXPECT_EQ(capsule.GetSourceInfoLocalized(),
              (Capsule::SourceInfoMap{{u"de_DE", Named(u"de")}, {u"fr_FR", Named(u"fr")}}));
    EXPECT_EQ(capsule.GetUsedFontsLocalized(), (Capsule::FontMap{{u"de_DE", {"de"}}, {u"fr_FR", {"fr"}}}));
}

TEST(Capsule, OlderSettersYieldAndEmptyMapsChangeNothing)
{
    Capsule capsule;
    capsule.SetSourceInfoObsolete(Named(u"old"));
    capsule.SetSourceInfoObsolete(Named(u"older"));
    capsule.SetUsedFontsObsolete({"old"});
    capsule.SetUsedFontsObsolete({"older"});
    capsule.SetSourceInfoVector({});
    capsule.SetUsedFontsVector({});
    EXPECT_EQ(capsule.GetSourceInfo().name, u"old");
    EXPECT_EQ(capsule.GetUsedFonts(), Capsule::StringList{"old"});
    capsule.SetUsedFonts(std::vector<orvcore::UTF8String>{u8"ＭＳ 明朝"});
    EXPECT_EQ(capsule.GetUsedFonts(), Capsule::StringList{orvcore::ToNarrow(u8"ＭＳ 明朝")});
    capsule.SetUsedFonts({"Serif", "Sans"});
    EXPECT_EQ(capsule.GetUsedFonts(), (Capsule::StringList{"Serif", "Sans"}));
    capsule.SetUsedFonts({});
    EXPECT_TRUE(capsule.GetUsedFonts().empty());
    capsule.SetUsedFonts({u8"明朝", u8"Ä"});
    EXPECT_EQ(capsule.GetUsedFonts(), (Capsule::StringList{orvcore::ToNarrow(u8"明朝"), orvcore::ToNarrow(u8"Ä")}));
}

TEST(Capsule, FindsTheFirstControlOfAnId)
{
    Capsule capsule;
    const auto make = [](const char16_t* id) {
        return orvcapsule::factory::CreateCheckboxControl(id, orvcapsule::UIString(), {}, true);
    };
    capsule.SetControls({make(u"a"), nullptr, make(u"b"), make(u"b")});
    EXPECT_EQ(capsule.FindControl(u"b"), capsule.GetControls()[2]);
    EXPECT_EQ(capsule.FindControl(u"c"), nullptr);
}

TEST(Capsule, EmptyLocalisedNameGivesTheOlderName)
{
    Capsule capsule;
    capsule.SetCapsuleNameObsolete(u"Plain");
    EXPECT_EQ(capsule.GetDisplayName(), u"Plain");
    capsule.SetCapsuleNameLocalized(orvcapsule::UIString(u"Shown"));
    EXPECT_EQ(capsule.GetDisplayName(), u"Shown");
}

TEST(Compatibility, AFormatVersionAdmitsItsStampAndOlderOnes)
{
    const std::vector<std::u16string> stamps = {u"201710", u"201804", u"201810", u"201904", u"201910", u"202010",
                                                u"202110", u"202210", u"202310", u"202410", u"202601"};
    const std::vector<std::string> versions = {"1.2", "1.3", "1.4", "1.5", "1.6", "1.7",
                                               "1.8", "1.9", "2.0", "2.1", "2.2"};
    Capsule capsule;
    for (std::size_t v = 0; v < versions.size(); ++v) {
        capsule.SetAPIVersion(versions[v]);
        for (std::size_t s = 0; s < stamps.size(); ++s) {
            capsule.SetTslibCompliantVersion(stamps[s]);
            bool known = false;
            EXPECT_EQ(capsule.CanUseTSLib(&known), s <= v) << versions[v] << " with stamp " << s;
            EXPECT_TRUE(known);
        }
        for (const char16_t* other : {u"0", u"", u"202611", u"2017100"}) {
            capsule.SetTslibCompliantVersion(other);
            EXPECT_FALSE(capsule.CanUseTSLib(nullptr));
        }
    }
    struct Case {
        const char* version;
        bool known;
    };
    capsule.SetTslibCompliantVersion(u"201710");
    for (const Case& c : {Case{"0.3", true}, Case{"", false}, Case{"2.3", false}, Case{"2.20", false}}) {
        capsule.SetAPIVersion(c.version);
        bool known = !c.known;
        EXPECT_FALSE(capsule.CanUseTSLib(&known)) << c.version;
        EXPECT_EQ(known, c.known) << c.version;
    }
}

TEST(Compatibility, OnlyTheUnsupportedMarkerIsNotCompliant)
{
    Capsule capsule;
    EXPECT_TRUE(capsule.IsTSLibCompliant());
    capsule.SetTslibCompliantVersion(u"0");
    EXPECT_FALSE(capsule.IsTSLibCompliant());
    capsule.SetTslibCompliantVersion(u"00");
    EXPECT_TRUE(capsule.IsTSLibCompliant());
    EXPECT_FALSE(orvcapsule::HasUnsupportedEffects({"any"}));
}

TEST(Utils, GuidTextIsNewEachTime)
{
    const auto first = orvcapsule::utils::GenerateStringGuid();
    EXPECT_EQ(first.size(), 36U);
    EXPECT_NE(first, orvcapsule::utils::GenerateStringGuid());
}

} // namespace
