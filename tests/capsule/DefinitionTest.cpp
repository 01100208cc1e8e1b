#include <capsule/ControlFactory.h>
#include <capsule/DefinitionKeys.h>
#include <capsule/Serialization.h>

#include <tests/support/Language.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace orvcapsule;
using orvcore::serialization::JSONParse;
using orvcore::serialization::ObjectHasProperty;
using orvtest::Language;
using serialization::CapsuleFromJson;
using serialization::CapsuleToJson;

TEST(Definition, TheVersionGateLooksAtTheRawText)
{
    struct Case {
        std::u8string_view json;
        bool accepted;
    };
    const Case cases[] = {
        {u8R"({"apiVersion":"2.2"})", true},
        {u8R"({"apiVersion":"2.1"})", true},
        {u8R"({"apiVersion":"1.0"})", true},
        {u8R"({"apiVersion":"3.0"})", false},
        {u8R"({"apiVersion":"2.3"})", false},
        {u8R"({"apiVersion":"2.29"})", true}, // the first three characters count
        {u8R"({"apiVersion":"10"})", false},
        {u8R"({"apiVersion":"abc"})", true}, // no number counts as 0
        {u8R"({"apiVersion":"inf"})", true},
        {u8R"({"apiVersion":""})", true},
        {u8R"({"apiVersion":9.9})", true},       // no quote follows: the text's beginning counts
        {u8R"({"apiVersion":9,"x":"1"})", true}, // the next quote is the next key's
        {u8R"({"authorApp":"tsfx"})", false},
        {u8R"({"description":"about apiVersion"})", true},
        {u8R"({"description":"apiVersion","apiVersion":"3.0"})", true}, // the first place counts
        {u8"", false},
        {u8"apiVersion", true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CapsuleFromJson(UTF8String(c.json)) != nullptr, c.accepted) << orvcore::ToNarrow(c.json);
    }
}

TEST(Definition, WhatIsNoObjectGivesAnEmptyRecord)
{
    std::u8string deep = u8R"({"apiVersion":"2.2","authorApp":)";
    deep.append(1000000, u8'[');
    std::u8string overlong = u8R"({"apiVersion":"2.2","capsuleTags":[0)";
    for (std::size_t i = 0; i < orvcore::serialization::kMaxJSONValues; ++i) {
        overlong += u8",0";
    }
    overlong += u8"]}";
    for (const std::u8string& text :
         {std::u8string(u8R"(["apiVersion","2.2"])"), std::u8string(u8R"({"apiVersion":"2.2",)"),
          std::u8string(u8"{\"apiVersion\":\"2.2\",\"authorApp\":\"\xFF\"}"), deep, overlong}) {
        const auto capsule = CapsuleFromJson(text);
        ASSERT_TRUE(capsule);
        EXPECT_EQ(capsule->GetAPIVersion(), "");
        EXPECT_EQ(capsule->GetAuthorApp(), u"");
    }
}

TEST(Definition, ReadsKeysAndTheirDefaults)
{
    const Language language("de_DE");
    const auto capsule = CapsuleFromJson(u8"\uFEFF"
                                         u8R"({"apiVersion":"2.1","capsuleName":"Alt","licenseID":"L",)"
                                         u8R"("capsuleTags":["a","b"],"mobileCompatibilityVersion":"2",)"
                                         u8R"("internalEffectsOnlyVersion":"3","fontwellOnlyVersion":"4",)"
                                         u8R"("responsiveDesignVersion":"5",)"
                                         u8R"("authorApp":"first","authorApp":"crvd"})");
    EXPECT_EQ(capsule->GetAPIVersion(), "2.1");
    EXPECT_EQ(capsule->GetDisplayName(), u"Alt");
    EXPECT_EQ(capsule->GetCapsuleNameLocalized(), UIString(u"Alt"));
    EXPECT_EQ(capsule->GetTags(), (Capsule::StringList{"a", "b"}));
    EXPECT_EQ(capsule->GetMobileCompatibilityVersion(), u"2");
    EXPECT_EQ(capsule->GetInternalEffectsVersion(), u"3");
    EXPECT_EQ(capsule->GetFontwellOnlyVersion(), u"4");
    EXPECT_EQ(capsule->GetResponsiveDesignTimeVersion(), u"5");
    EXPECT_EQ(capsule->GetTslibCompliantVersion(), u"");
    EXPECT_EQ(capsule->GetAuthorApp(), u"crvd");
    EXPECT_EQ(capsule->GetLicenseID(), u"L");
}

TEST(Definition, OlderFormsYieldToNewerOnesButNotToEmptyOnes)
{
    const Language language("de_DE");
    const auto fonts = [](std::u8string_view json) {
        return CapsuleFromJson(UTF8String(json))->GetUsedFontsLocalized();
    };
    EXPECT_EQ(fonts(u8R"({"apiVersion":"2.2","usedFonts":["Old"],"usedFontsLocalized":{}})"),
              (Capsule::FontMap{{u"de_DE", {"Old"}}}));
    EXPECT_EQ(fonts(u8R"({"apiVersion":"2.2","usedFonts":["Old"],"usedFontsLocalized":{"fr_FR":["New"]}})"),
              (Capsule::FontMap{{u"fr_FR", {"New"}}}));

    kinlet::SourceInfo info;
    info.name = u"new";
    const auto composition = orvcore::serialization::GetJSONUTF8String(serialization::SourceInfoToJson(info), false);
    const auto both = CapsuleFromJson(u8R"({"apiVersion":"2.2","sourceInfo":)" + composition +
                                      u8R"(,"sourceInfoLocalized":{"fr_FR":)" + composition + u8"}}");
    EXPECT_EQ(both->GetSourceInfoLocalized().count(u"de_DE"), 0U);
    EXPECT_EQ(both->GetSourceInfoLocalized().at(u"fr_FR"), info);
    const auto older =
        CapsuleFromJson(u8R"({"apiVersion":"2.2","sourceInfoLocalized":{},"sourceInfo":)" + composition + u8"}");
    EXPECT_EQ(older->GetSourceInfoLocalized().at(u"de_DE"), info);
}

TEST(Definition, KeysOfTheWrongTypeAreIgnoredAtTheTop)
{
    const auto capsule = CapsuleFromJson(
        u8R"({"apiVersion":2,"authorApp":5,"capsuleNameLocalized":"x","capsuleName":"Kept","platformSupport":[1],)"
        u8R"("sourceInfo":7,"sourceInfoLocalized":[],"clientControls":{},"usedFontsLocalized":{"a":1},)"
        u8R"("usedFonts":"x","capsuleTags":null,"licenseID":"L"})");
    EXPECT_EQ(capsule->GetAPIVersion(), "");
    EXPECT_EQ(capsule->GetDisplayName(), u"Kept");
    EXPECT_TRUE(capsule->GetPlatformSupport().empty() && capsule->GetControls().empty() && capsule->GetTags().empty());
    EXPECT_TRUE(capsule->GetSourceInfoLocalized().empty() && capsule->GetUsedFontsLocalized().empty());
    EXPECT_EQ(capsule->GetLicenseID(), u"L");
}

TEST(Definition, WritesEveryKeyInByteOrderAndNoOlderOne)
{
    const auto text = CapsuleToJson(std::make_shared<Capsule>());
    EXPECT_TRUE(
        text.starts_with(u8R"({"apiVersion":"2.2","authorApp":"","authorID":"","capsuleID":"","capsuleName":"")"));
    const auto tree = JSONParse(text);
    EXPECT_EQ(orvcore::serialization::AsObject(tree)->size(), 21U);
    EXPECT_FALSE(ObjectHasProperty(tree, u8"sourceInfo"));
    EXPECT_FALSE(ObjectHasProperty(tree, u8"usedFonts"));
    EXPECT_EQ(orvcore::serialization::GetJSONUTF8String(tree, false), text); // an ordered map writes the same
    EXPECT_EQ(CapsuleToJson(nullptr), u8"");
    EXPECT_STREQ(CAPSULE_INTERNALEFFFECTSONLY_VERSION_STR, "internalEffectsOnlyVersion");
}

TEST(Definition, AFullRecordReadsBack)
{
    kinlet::SourceInfo info;
    info.name = u"comp \xD83D\xDE00";
    info.duration = {INT64_MAX, INT64_MIN};
    info.alphaMatteColorGreen = std::nextafter(0.1, 1.0);
    const auto capsule = std::make_shared<Capsule>(
        u"tsfx", u"author", u"name \"quoted\"\n", u"id", u"字幕", Capsule::StringList{"tsfx", "brsk"}, info,
        Capsule::ControlList{factory::CreateCheckboxControl(u"c", UIString(u"C"), {}, true)},
        Capsule::StringList{"Font"}, Capsule::StringList{"fx"}, Capsule::StringList{"r"}, Capsule::StringList{"png"},
        Capsule::StringList{"tag"}, u"201710", u"201804", u"201810", u"201904");
    capsule->SetLicenseID(u"L");
    capsule->SetResponsiveDesignTimeVersion(u"202010");
    // Keys past the surrogates come in another order in UTF-8 than in UTF-16.
    capsule->SetUsedFontsVector({{u"\xFFFD", {"a"}}, {u"\xD83D\xDE00", {"b", "c"}}});
    const auto text = CapsuleToJson(capsule);
    const auto read = CapsuleFromJson(text);
    EXPECT_EQ(read->GetSourceInfo(), info);
    EXPECT_EQ(read->GetUsedFontsLocalized(), capsule->GetUsedFontsLocalized());
    EXPECT_EQ(read->GetCapsuleNameObsolete(), capsule->GetCapsuleNameObsolete());
    EXPECT_EQ(CapsuleToJson(read), text);
    EXPECT_EQ(orvcore::serialization::GetJSONUTF8String(JSONParse(text), false), text);
}

TEST(Definition, MissingKeysInsideCarryTheirName)
{
    try {
        CapsuleFromJson(u8R"({"apiVersion":"2.2","sourceInfoLocalized":{"en_US":{"name":"x"}}})");
        FAIL();
    } catch (const orvcore::serialization::missing_key_exception& error) {
        EXPECT_EQ(error.GetKey(), "parentprojectfile");
    }
}

TEST(Definition, WhatNoReaderWouldTakeCannotBeWritten)
{
    const auto capsule = std::make_shared<Capsule>(u"tsfx", u"n", u"");
    capsule->SetTags(Capsule::StringList(orvcore::serialization::kMaxJSONValues, "t"));
    EXPECT_THROW(CapsuleToJson(capsule), orvcore::serialization::json_write_exception);
    capsule->SetTags({std::string(orvcore::serialization::kMaxJSONSize, 't')});
    EXPECT_THROW(CapsuleToJson(capsule), orvcore::serialization::json_write_exception);
}

TEST(Definition, WhatNoReaderWouldTakeForItsDepthIsNotWritten)
{
    const auto nested = [](std::size_t arrays, const std::string& inside) {
        return std::string(arrays, '[') + inside + std::string(arrays, ']');
    };
    struct Case {
        std::string kept;
        bool writable;
    };
    const Case cases[] = {{nested(253, "1,\"]]\\\"]\""), true}, {nested(254, ""), true}, {nested(254, "{}"), false}};
    for (const Case& c : cases) {
        for (const std::size_t count : {1U, 600U}) { // in one piece, and in parts by several workers
            kinlet::MediaReplacementProperties properties;
            properties.unknownKeys = {{"kept", c.kept}};
            auto capsule = std::make_shared<Capsule>(u"tsfx", u"n", u"");
            capsule->SetControls(
                Capsule::ControlList(count, factory::CreateMediaControl(u"m", {}, {}, true, properties, u"")));
            try {
                const auto text = CapsuleToJson(capsule);
                EXPECT_TRUE(c.writable);
                EXPECT_EQ(CapsuleToJson(CapsuleFromJson(text)), text);
            } catch (const orvcore::serialization::json_write_exception& error) {
                EXPECT_FALSE(c.writable);
                EXPECT_NE(std::string(error.what()).find("\"kept\""), std::string::npos);
            }
        }
    }
}

} // namespace
