#include <capsule/ControlFactory.h>
#include <capsule/ForeignValue.h>
#include <capsule/Serialization.h>

#include <tests/support/Language.h>

#include <gtest/gtest.h>

#include <typeinfo>

namespace {

using namespace orvcapsule;
using orvcore::serialization::GetJSONUTF8String;
using orvcore::serialization::JSONParse;
using orvcore::serialization::missing_key_exception;
using orvtest::Language;

const ControlProperties kAnimated{true};

std::vector<factory::ControlPtr> OneOfEachKind()
{
    const UIString name(u"Label");
    kinlet::SpreadsheetValue sheet;
    sheet.activeRows = 2;
    sheet.columnValues = {{std::u16string(u"a"), 2.5}, {true}};
    kinlet::SourceTextFontEditInfo font;
    font.sizeEditable = true;
    kinlet::MediaReplacementProperties media;
    media.layerID = 7;
    return {
        factory::CreateCheckboxControl(u"check", name, kAnimated, true),
        factory::CreateSliderControl(u"slider", name, kAnimated, -1.5, 100, 50),
        factory::CreateAngleControl(u"angle", name, {}, 359.75),
        factory::CreateColorControl(u"color", name, kAnimated, {0.1, 0.2, 0.3, 0.4}),
        factory::CreatePoint2DControl(u"point", name, kAnimated, {1920.5, -3}),
        factory::CreateStringControl(u"text", name, {}, UIString(u"Hallo"), font, {true, 3, 4}, {}),
        factory::CreateCommentControl(u"comment", name, {}, UIString(u"Remark")),
        factory::CreateScaleControl(u"scale", name, kAnimated, true, 3, {100, 50.5, 0}),
        factory::CreateGroupControl(u"group", name, {}, {u"check", u"nobody"}, true),
        factory::CreateMenuControl(u"menu", name, {}, 2, {UIString(u"a"), UIString(u"b"), UIString(u"c")}),
        factory::CreateMediaControl(u"media", name, {}, true, media, u"0f3c9a"),
        factory::CreateSpreadsheetControl(u"sheet", name, {}, 1, 50, {{{}, UIString(u"Column"), -1, 1}}, sheet),
    };
}

TEST(Control, EveryKindReadsBackWhatItWrites)
{
    for (const auto& control : OneOfEachKind()) {
        const auto tree = serialization::ClientControlToJson(control);
        const auto read = serialization::ClientControlFromJson(tree);
        ASSERT_TRUE(read) << orvcore::ToNarrow(control->GetID());
        EXPECT_EQ(read->GetType(), control->GetType());
        EXPECT_EQ(read->GetID(), control->GetID());
        EXPECT_EQ(*read->GetLocName(), *control->GetLocName());
        EXPECT_EQ(read->GetProperties(), control->GetProperties());
        EXPECT_EQ(read->GetVal(), control->GetVal()) << orvcore::ToNarrow(control->GetID());
        // The kind's own settings, by way of the text: equal objects write equal texts.
        EXPECT_EQ(GetJSONUTF8String(serialization::ClientControlToJson(read), false), GetJSONUTF8String(tree, false));
    }
}

TEST(Control, AClonePassesForTheOriginalAndIsApart)
{
    auto controls = OneOfEachKind();
    controls.push_back(factory::CreateGroupDropZoneControl(u"zone", UIString(u"Label"), {}, {u"a"}));
    for (const auto& control : controls) {
        const auto text = GetJSONUTF8String(serialization::ClientControlToJson(control), false);
        const auto clone = factory::CloneControl(*control);
        EXPECT_EQ(typeid(*clone), typeid(*control));
        EXPECT_EQ(GetJSONUTF8String(serialization::ClientControlToJson(clone), false), text);
        clone->SetID(u"other");
        EXPECT_EQ(GetJSONUTF8String(serialization::ClientControlToJson(control), false), text);
    }
}

TEST(Control, WrittenFormOfOneSlider)
{
    const Language language("de_DE");
    const auto slider = factory::CreateSliderControl(u"s", UIString(u"Größe"), kAnimated, 0, 100, 50);
    slider->SetToolTip(u"never stored");
    EXPECT_EQ(GetJSONUTF8String(serialization::ClientControlToJson(slider), false),
              u8R"({"canAnimate":true,"id":"s","max":100.0,"min":0.0,"type":2,)"
              u8R"("uiName":{"strDB":[{"localeString":"de_DE","str":"Größe"}]},)"
              u8R"("uiSuffix":{"strDB":[{"localeString":"de_DE","str":""}]},)"
              u8R"("uiToolTip":{"strDB":[{"localeString":"de_DE","str":""}]},"value":50.0})");
    slider->SetHidden(true);
    const auto hidden = serialization::ClientControlToJson(slider);
    EXPECT_TRUE(orvcore::serialization::ObjectHasProperty(hidden, u8"hidden"));
    const auto read = serialization::ClientControlFromJson(hidden);
    EXPECT_FALSE(read->GetHidden());
    EXPECT_EQ(read->GetToolTip(), u"");
}

TEST(Control, KindsWithoutAFormAreWrittenShortAndSkippedOnReading)
{
    const auto zone = factory::CreateGroupDropZoneControl(u"zone", UIString(), {}, {u"a"});
    const auto odd = std::make_shared<ClientControl>(static_cast<ClientControlType>(99), u"odd", UIString(),
                                                     ControlProperties(), 1.0);
    for (const auto& control : {zone, odd}) {
        const auto tree = serialization::ClientControlToJson(control);
        EXPECT_EQ(orvcore::serialization::AsObject(tree)->size(), 6U);
        EXPECT_FALSE(serialization::ClientControlFromJson(tree));
    }
    for (const char8_t* text :
         {u8"5", u8"[]", u8R"({"type":7,"canAnimate":true})", u8R"({"type":"2","canAnimate":true,"id":"x"})",
          u8R"({"type":5000000000,"canAnimate":true})"}) {
        EXPECT_FALSE(serialization::ClientControlFromJson(JSONParse(text)));
    }
}

TEST(Control, RequiredKeysAreNamedWhenMissing)
{
    struct Case {
        std::u8string_view json;
        const char* key;
    };
    const Case cases[] = {
        {u8R"({"type":1,"id":"x","value":true})", "canAnimate"},
        {u8R"({"canAnimate":true})", "type"},
        {u8R"({"type":12})", "canAnimate"},
        {u8R"({"type":"2"})", "canAnimate"},
        {u8R"({"type":1,"canAnimate":true})", "value"},
        {u8R"({"type":1,"canAnimate":true,"value":1})", "value"},
        {u8R"({"type":2,"canAnimate":true,"min":0,"value":1})", "max"},
        {u8R"({"type":4,"canAnimate":true,"value":[1,2,3]})", "value"},
        {u8R"({"type":5,"canAnimate":true,"value":{"x":1}})", "y"},
        {u8R"({"type":9,"canAnimate":true,"linked":true,"value":[]})", "dimensions"},
        {u8R"({"type":10,"canAnimate":true,"value":[]})", "groupexpanded"},
        {u8R"({"type":13,"canAnimate":true,"value":0})", "menucontent"},
        {u8R"({"type":13,"canAnimate":true,"menucontent":[],"value":3000000000})", "value"},
        {u8R"({"type":13,"canAnimate":true,"menucontent":[],"value":100000000000000000000})", "value"},
        {u8R"({"type":14,"canAnimate":true,"isExpanded":true})", "cacheID"},
        {u8R"({"type":6,"canAnimate":true,"value":{"strDB":[{"str":{}}]}})", "value"},
        {u8R"({"type":8,"canAnimate":true,"value":{"strDB":[{"str":""},{"str":"","localeString":null}]}})", "value"},
        {u8R"({"type":11,"canAnimate":true,"minRows":-1,"maxRows":1,"columnInfo":[],"value":{}})", "minRows"},
    };
    for (const Case& c : cases) {
        try {
            serialization::ClientControlFromJson(JSONParse(c.json));
            ADD_FAILURE() << orvcore::ToNarrow(c.json);
        } catch (const missing_key_exception& error) {
            EXPECT_EQ(error.GetKey(), c.key);
        }
    }
}

TEST(Control, OptionalPartsOfATextTakeDefaults)
{
    const auto read = std::dynamic_pointer_cast<StringControl>(serialization::ClientControlFromJson(
        JSONParse(u8R"({"type":6,"canAnimate":false,"value":{"strDB":[{"str":"no locale"}]}})")));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->GetFontEditInfo(), kinlet::SourceTextFontEditInfo());
    EXPECT_EQ(read->GetAlternateRectInfo(), AlternateRectInfo());
    EXPECT_EQ(std::get<UIString>(read->GetVal()).GetLocaleStrings().at(u"en_US"), u"no locale");
}

TEST(Control, WhatReadersTakeThoughWritersPutItOtherwise)
{
    struct Case {
        std::u8string_view json;
        std::u8string_view key;
        std::string_view written; // the text under the key; empty: the key is not written
    };
    const Case cases[] = {
        {u8R"({"type":2,"canAnimate":true,"min":0,"max":100000000000000000000,"value":1})", u8"max", "1e+20"},
        {u8R"({"type":3,"canAnimate":true,"value":1,"x":[-100000000000000000000]})", u8"value", "1.0"},
        {u8R"({"type":14,"canAnimate":true,"cacheID":"","isExpanded":true,"value":"old"})", u8"value", ""},
        {u8R"({"type":14,"canAnimate":true,"cacheID":"","isExpanded":true,"zoom":1})", u8"zoom", "1"},
        {u8R"({"type":1,"canAnimate":true,"value":true,"uiName":{"strDB":[{"str":"a"},{"str":5}]}})", u8"uiName",
         R"({"strDB":[{"localeString":"en_US","str":""}]})"},
    };
    for (const Case& c : cases) {
        const auto tree = serialization::ClientControlToJson(serialization::ClientControlFromJson(JSONParse(c.json)));
        const bool isThere = orvcore::serialization::ObjectHasProperty(tree, c.key);
        EXPECT_EQ(isThere ? orvcore::ToNarrow(
                                GetJSONUTF8String(orvcore::serialization::GetVariantInObject(tree, c.key), false))
                          : "",
                  c.written)
            << orvcore::ToNarrow(c.json);
    }
}

TEST(Control, AForeignValueCannotBeWritten)
{
    for (const auto& control : OneOfEachKind()) {
        const ControlValue own = control->GetVal();
        EXPECT_THROW(control->SetValOfKind(1.0F), foreign_value_exception);
        EXPECT_EQ(control->GetVal(), own);
        EXPECT_NO_THROW(control->SetValOfKind(own));
        control->SetVal(1.0F);
        try {
            serialization::ClientControlToJson(control);
            ADD_FAILURE() << orvcore::ToNarrow(control->GetID());
        } catch (const std::bad_variant_access& error) {
            EXPECT_NE(std::string(error.what()).find('"' + orvcore::ToNarrow(control->GetID()) + '"'),
                      std::string::npos);
        }
    }
    const auto disguised =
        std::make_shared<ClientControl>(ClientControlType::kSlider, u"", UIString(), ControlProperties(), 1.0);
    EXPECT_THROW(serialization::ClientControlToJson(disguised), std::bad_cast);
}

TEST(Control, KindsWithoutSettingsNeedNoClassOfTheirOwn)
{
    for (const auto& control : OneOfEachKind()) {
        const auto copy = std::make_shared<ClientControl>(*control);
        const auto type = control->GetType();
        if (type == ClientControlType::kCheckbox || type == ClientControlType::kAngle ||
            type == ClientControlType::kColor || type == ClientControlType::kPoint2D ||
            type == ClientControlType::kComment) {
            EXPECT_EQ(GetJSONUTF8String(serialization::ClientControlToJson(copy), false),
                      GetJSONUTF8String(serialization::ClientControlToJson(control), false));
        } else {
            EXPECT_THROW(serialization::ClientControlToJson(copy), std::bad_cast);
        }
    }
}

TEST(Control, SettingsOfOneTypeAreNotMixedUp)
{
    const auto read = [](std::u8string_view json) { return serialization::ClientControlFromJson(JSONParse(json)); };
    const auto slider =
        std::dynamic_pointer_cast<SliderControl>(read(u8R"({"type":2,"canAnimate":true,"min":1,"max":2,"value":3})"));
    EXPECT_EQ(slider->GetMinimum(), 1);
    EXPECT_EQ(slider->GetMaximum(), 2);
    EXPECT_EQ(std::get<double>(slider->GetVal()), 3);
    const auto sheet = std::dynamic_pointer_cast<SpreadsheetControl>(
        read(u8R"({"type":11,"canAnimate":true,"minRows":1,"maxRows":2,"value":{},"columnInfo":[)"
             u8R"({"columnName":{"strDB":[]},"columnDataType":1,"columnMinValue":3,"columnMaxValue":4}]})"));
    EXPECT_EQ(sheet->GetMinRows(), 1U);
    EXPECT_EQ(sheet->GetMaxRows(), 2U);
    EXPECT_EQ(sheet->GetColumns().at(0).minimum, 3);
    EXPECT_EQ(sheet->GetColumns().at(0).maximum, 4);
    EXPECT_EQ(serialization::AlternateRectInfoFromJson(uR"({"isEnabled":true,"compId":1,"layerId":2})"),
              (AlternateRectInfo{true, 1, 2}));
}

TEST(Control, LongListsKeepTheirOrder)
{
    std::vector<double> values(5000);
    std::vector<UTF16String> members(2000);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = static_cast<double>(i) / 8;
    }
    for (std::size_t i = 0; i < members.size(); ++i) {
        members[i] = orvcore::ToUTF16(std::to_string(i));
    }
    auto capsule = std::make_shared<Capsule>(u"tsfx", u"Long", u"");
    std::vector<std::shared_ptr<ClientControl>> controls(700, factory::CreateAngleControl(u"", {}, {}, 0));
    controls[0] = factory::CreateScaleControl(u"", {}, {}, true, 2, values);
    controls[699] = factory::CreateGroupControl(u"last", UIString(), {}, members, false);
    capsule->SetControls(controls);
    const auto read = serialization::CapsuleFromJson(serialization::CapsuleToJson(capsule));
    ASSERT_EQ(read->GetControls().size(), 700U);
    EXPECT_EQ(std::get<std::vector<double>>(read->GetControls()[0]->GetVal()), values);
    EXPECT_EQ(std::get<std::vector<UTF16String>>(read->GetControls()[699]->GetVal()), members);

    controls[600] = factory::CreateSliderControl(u"", {}, {}, 0, 0, 0);
    controls[600]->SetVal(true);
    capsule->SetControls(controls);
    EXPECT_THROW(serialization::CapsuleToJson(capsule), std::bad_variant_access);
}

TEST(Control, RecordsConvertAsWideText)
{
    const AlternateRectInfo rect{true, -5, 2147483647};
    EXPECT_EQ(serialization::AlternateRectInfoFromJson(serialization::AlternateRectInfoToJson(rect)), rect);
    const std::vector<SpreadsheetColumnInfoLoc> columns = {
        {kinlet::SpreadsheetColumnDataType::kNumber, UIString(u"Größe"), -1, 0.1}};
    EXPECT_EQ(serialization::SpreadsheetColInfoLocVecFromJson(serialization::SpreadsheetColInfoLocVecToJson(columns)),
              columns);
    kinlet::TextEditInfo edit;
    edit.text = u"Größe";
    EXPECT_EQ(serialization::TextEditInfoFromJson(serialization::TextEditInfoToJson(edit)), edit);
    for (const char16_t* broken : {u"", u"{", u"5"}) {
        EXPECT_EQ(serialization::AlternateRectInfoFromJson(broken), AlternateRectInfo());
        EXPECT_TRUE(serialization::SpreadsheetColInfoLocVecFromJson(broken).empty());
    }
}

TEST(Control, NamesAreSetForOneLanguage)
{
    const auto control =
        factory::CreateCheckboxControl(u"c", UIString(std::vector<LocStrPair>{{u"en_US", u"Check"}}), {}, true);
    const Language language("de_DE");
    control->SetName(u"Haken");
    EXPECT_EQ(*control->GetLocName(), UIString(std::vector<LocStrPair>{{u"en_US", u"Check"}, {u"de_DE", u"Haken"}}));
    EXPECT_EQ(control->GetName(), u"Haken");
}

} // namespace
