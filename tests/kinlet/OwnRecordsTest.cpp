#include "Records.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>

namespace {

using boost::gregorian::date;
using kinlet::MediaReplacementProperties;
using kinlet::SpreadsheetCell;
using kinlet::SpreadsheetData;
using orvcore::serialization::AsArray;
using orvcore::serialization::GetJSONUTF8String;
using orvcore::serialization::JSONParse;
using orvcore::serialization::Object;
using orvcore::serialization::Variant;

// A value in every field: one that is not written, or not read, shows as a difference.
kinlet::CapsuleParams FullParams()
{
    kinlet::CapsuleParams r;
    r.capsuleID = u"\"\u00e9\u5b57\xD83D\xDE00\n";
    r.params = {{u"flag", true, {}},
                {u"number", std::int64_t{-7}, {{"hint", R"("x")"}}},
                {u"double", 50.0, {}},
                {u"text", u"t", {}},
                {u"list", std::vector<double>{0.5, -0.0, 1e300}, {}}};
    r.unknownKeys = {{"aaa", R"({"b":[1,2.5,null]})"}, {"zzz", "18446744073709551615"}};
    return r;
}

kinlet::TextEditInfo FullTextEdit()
{
    kinlet::TextEditInfo r;
    r.text = u"text";
    r.overrideType = kinlet::ESourceTextOverrideType::kTextAndFont;
    auto& font = r.fontEditInfo;
    font.fontEditable = font.styleEditable = font.italic = font.smallCaps = true;
    font.fontName = "Serif";
    font.fontSize = 12.5;
    font.unknownKeys = {{"kerning", "[1.0]"}};
    r.styleRuns = {{3, "Serif-Bold", 12.5, {0.1, 0.2, 0.3, 0.4}, {{"t", "true"}}}, {}};
    r.unknownKeys = {{"language", R"("de")"}};
    return r;
}

// What the records with a form of our own have in common.
template <class Record>
void ExpectTolerant(const Record& full, std::initializer_list<std::string_view> keys)
{
    EXPECT_EQ(ThroughText(full), full);
    EXPECT_EQ(FromText<Record>(u8"{}"), Record());
    for (const std::string_view key : keys) {
        Object object = std::any_cast<Object>(TreeOf(full));
        ASSERT_EQ(object.erase(orvcore::ToUTF8(key)), 1U) << key;
        EXPECT_EQ(MissingKey<Record>(object), "") << key;
        object[orvcore::ToUTF8(key)] = std::make_shared<Variant>();
        EXPECT_EQ(MissingKey<Record>(object), key);
    }
    Record stranger;
    stranger.unknownKeys = {{"new", R"([{"k":-1.50}])"}};
    EXPECT_NE(stranger, Record());
    EXPECT_THAT(ToText(stranger), testing::HasSubstr(R"("new":[{"k":-1.5)"));
}

TEST(CapsuleParams, ReadsBackAndKeepsWhatItDoesNotKnow)
{
    const auto full = FullParams();
    ExpectTolerant(full, {"capsuleID", "params"});
    kinlet::CapsuleParams read;
    EXPECT_TRUE(read.FromJSON(full.ToJSON()));
    EXPECT_EQ(read, full);
    EXPECT_FALSE(read.FromJSON(JSONParse(u8"7")));
    EXPECT_EQ(read, full);
    EXPECT_THROW(read.FromJSON(JSONParse(u8R"({"params":[{"value":{}}]})")),
                 orvcore::serialization::missing_key_exception);
    EXPECT_EQ(read, full);
}

TEST(TextEditInfo, ReadsBackAndKeepsWhatItDoesNotKnow)
{
    const auto full = FullTextEdit();
    ExpectTolerant(full, {"text", "overrideType", "fontEditInfo", "styleRuns"});
    ExpectTolerant(full.fontEditInfo, {"fontEditable", "sizeEditable", "styleEditable", "fontName", "fontSize", "bold",
                                       "italic", "allCaps", "smallCaps"});
    EXPECT_EQ(MissingKey<kinlet::TextEditInfo>(JSONParse(u8R"({"styleRuns":[{"fillColor":[1,1,1]}]})")), "fillColor");
    using Font = kinlet::SourceTextFontEditInfo;
    const std::pair<std::u8string_view, bool Font::*> flags[] = {{u8"fontEditable", &Font::fontEditable},
                                                                 {u8"sizeEditable", &Font::sizeEditable},
                                                                 {u8"styleEditable", &Font::styleEditable},
                                                                 {u8"bold", &Font::bold},
                                                                 {u8"italic", &Font::italic},
                                                                 {u8"allCaps", &Font::allCaps},
                                                                 {u8"smallCaps", &Font::smallCaps}};
    for (const auto& [key, flag] : flags) {
        Font expected;
        expected.*flag = true;
        EXPECT_EQ(FromText<Font>(u8"{\"" + std::u8string(key) + u8"\":true}"), expected) << orvcore::AsNarrow(key);
    }
}

TEST(UnknownKeys, ARecordsOwnKeysComeFirst)
{
    kinlet::TextEditInfo edit;
    edit.text = u"new";
    edit.unknownKeys = {{"text", R"("stale")"}, {"zone", "1"}, {"a", "2"}};
    const std::string text = ToText(edit);
    EXPECT_EQ(text.find("stale"), std::string::npos) << text;
    EXPECT_EQ(ThroughText(edit).text, u"new");
    EXPECT_EQ(ThroughText(edit).unknownKeys, (orvcore::serialization::UnknownKeys{{"zone", "1"}, {"a", "2"}}));
}

TEST(UnknownKeys, TextsThatAreNotJSONAreRefusedByKey)
{
    using orvcore::serialization::json_write_exception;
    for (const std::string& text : std::initializer_list<std::string>{"", "x", "1 2", "1,\"b\":2", R"({"a":})", "[1",
                                                                      "\xEF\xBB\xBF"
                                                                      "1",
                                                                      "\"\xFF\"", "1e400"}) {
        MediaReplacementProperties media;
        media.unknownKeys = {{"kept", text}};
        kinlet::TextEditInfo edit;
        edit.unknownKeys = media.unknownKeys;
        Object control;
        const std::function<void()> roads[] = {[&] { ToText(edit); }, [&] { TreeOf(edit); },
                                               [&] { media.ConvertToObject(control); }};
        for (const auto& road : roads) {
            try {
                road();
                ADD_FAILURE() << text;
            } catch (const json_write_exception& error) {
                EXPECT_THAT(error.what(), testing::HasSubstr("\"kept\""));
            }
        }
    }
}

TEST(ToJSON, RefusesNumbersThatAreNotFinite)
{
    EXPECT_THROW(TreeOf(kinlet::PointF{std::nan(""), 0}), orvcore::serialization::json_write_exception);
    SpreadsheetData data;
    data.columnValues = {std::vector<SpreadsheetCell>(600, HUGE_VAL)};
    EXPECT_THROW(TreeOf(data), orvcore::serialization::json_write_exception);
}

TEST(SpreadsheetData, ReadsBackAndKeepsWhatItDoesNotKnow)
{
    SpreadsheetData full;
    full.activeRows = ~0ULL;
    full.columnValues = {{std::monostate(), std::u16string(u"2024-02-29"), 5.0, -0.25, true, false},
                         {},
                         {date(2024, 2, 29), date(1400, 1, 1), date(9999, 12, 31), date(),
                          date(boost::date_time::pos_infin), date(boost::date_time::neg_infin)}};
    full.unknownKeys = {{"rowIds", "[3,1,2]"}};
    ExpectTolerant(full, {"activeRows", "columnValues"});
    EXPECT_EQ(ToText(full), R"({"activeRows":18446744073709551615,"columnValues":[[null,"2024-02-29",5.0,-0.25,true,)"
                            R"(false],[],[{"date":"2024-02-29"},{"date":"1400-01-01"},{"date":"9999-12-31"},)"
                            R"({"date":"not-a-date"},{"date":"+infinity"},{"date":"-infinity"}]],"rowIds":[3,1,2]})");
}

TEST(SpreadsheetData, UnusableCellsAreReported)
{
    for (const std::u8string_view cell :
         {u8R"({"date":"2023-02-29"})", u8R"({"date":"2023-2-9"})", u8R"({"date":"20230-1-01"})",
          u8R"({"date":"1399-12-31"})", u8R"({"date":"-123-01-01"})", u8R"({"date":5})",
          u8R"({"date":"2023-01-01","zone":0})", u8R"({})", u8R"([])", u8R"(9007199254740993)"}) {
        const auto tree = JSONParse(u8R"({"columnValues":[[1,)" + std::u8string(cell) + u8"]]}");
        EXPECT_EQ(MissingKey<SpreadsheetData>(tree), "columnValues") << orvcore::AsNarrow(cell);
    }
}

TEST(SpreadsheetData, LongColumnsKeepTheirOrder)
{
    SpreadsheetData data;
    auto& column = data.columnValues.emplace_back();
    for (int row = 0; row < 5000; ++row) {
        if (row % 3 == 0) {
            column.emplace_back(row * 0.5);
        } else {
            column.emplace_back(orvcore::ToUTF16(std::string_view(std::to_string(row))));
        }
    }
    EXPECT_EQ(ThroughText(data), data);
    Object object = std::any_cast<Object>(TreeOf(data));
    const auto* columns = AsArray(*object[u8"columnValues"]);
    auto tree = JSONParse(GetJSONUTF8String(*columns->front(), false));
    *std::any_cast<orvcore::serialization::Array&>(tree)[4321] = Variant(Object());
    *columns->front() = tree;
    EXPECT_EQ(MissingKey<SpreadsheetData>(object), "columnValues");
}

TEST(SpreadsheetColumnInfo, ReadsBack)
{
    const kinlet::SpreadsheetColumnInfo column{kinlet::SpreadsheetColumnDataType::kDate, u"Tag", -1e-9, 100};
    EXPECT_EQ(ThroughText(column), column);
    EXPECT_EQ(ToText(column),
              R"({"columnDataType":3,"columnMaxValue":100.0,"columnMinValue":-1e-09,"columnName":"Tag"})");
    EXPECT_EQ(MissingKey<kinlet::SpreadsheetColumnInfo>(JSONParse(u8R"({"columnDataType":1})")), "columnName");
}

TEST(PointsAndColors, ReadBack)
{
    EXPECT_EQ(ToText(kinlet::PointF{1, -2.5}), R"({"x":1.0,"y":-2.5})");
    EXPECT_EQ(FromText<kinlet::PointF>(u8R"({"x":1,"y":2})"), (kinlet::PointF{1, 2}));
    const kinlet::ColorRGBA color{0.1, 1.0 / 3, 4.5, 0};
    EXPECT_EQ(ThroughText(color), color);
    kinlet::ColorRGBA read;
    for (const std::u8string_view bad : {u8"[1,1,1]", u8"[1,1,1,1,1]", u8R"([1,1,1,"1"])", u8"{}"}) {
        EXPECT_FALSE(FromTree(JSONParse(bad), read)) << orvcore::AsNarrow(bad);
    }
}

TEST(MediaReplacementProperties, LieAmongAControlsKeys)
{
    MediaReplacementProperties properties;
    properties.fit = kinlet::MediaReplacementFit::kStretch;
    properties.mediaKinds = kinlet::kMediaKindAudio;
    properties.trimToSlot = false;
    properties.layerID = -5;
    properties.unknownKeys = {{"replacementBlur", R"({"r":2.5})"}, {"id", R"("not mine")"}};

    Object control = std::any_cast<Object>(JSONParse(u8R"({"id":"logo","type":14,"cacheID":"0f"})"));
    properties.ConvertToObject(control);
    EXPECT_EQ(orvcore::ToNarrow(GetJSONUTF8String(Variant(control), false)),
              R"({"cacheID":"0f","id":"logo","replacementBlur":{"r":2.5},"replacementFit":3,"replacementKinds":4,)"
              R"("replacementLayerID":-5,"replacementTrimToSlot":false,"type":14})");

    constexpr std::u8string_view own[] = {u8"id", u8"type", u8"cacheID"};
    properties.unknownKeys.erase("id");
    EXPECT_EQ(MediaReplacementProperties::ExtractProperties(control, own), properties);
    EXPECT_EQ(MediaReplacementProperties::ExtractProperties({}), MediaReplacementProperties());
    control[u8"replacementFit"] = std::make_shared<Variant>(true);
    EXPECT_THROW(MediaReplacementProperties::ExtractProperties(control, own),
                 orvcore::serialization::missing_key_exception);
}

struct Slot {
    std::string id;
    MediaReplacementProperties properties;
    bool zoomed = false;
};

} // namespace

template <>
struct orvcore::serialization::detail::JSONTable<Slot> {
    static constexpr auto fields = std::tuple_cat(
        Fields(Required("id", &Slot::id)), Lift<Slot>(&Slot::properties, JSONTable<MediaReplacementProperties>::fields),
        Fields(Optional("replacementZoomed", &Slot::zoomed).WrittenWhen([](const Slot& slot) { return slot.zoomed; })));
    static constexpr auto unknown = [](auto& slot) -> auto&
    {
        return slot.properties.unknownKeys;
    };
};

namespace {

TEST(JSONTable, RowsOfAPartLieAmongTheWholes)
{
    using orvcore::serialization::detail::FromTree;
    using orvcore::serialization::detail::ToText;
    constexpr std::u8string_view text = u8R"({"a":[1],"id":"s","replacementFit":2,"replacementKinds":3,)"
                                        u8R"("replacementLayerID":0,"replacementTrimToSlot":true,)"
                                        u8R"("replacementZoomed":true,"z":null})";
    Slot slot;
    ASSERT_TRUE(FromTree(JSONParse(text), slot));
    EXPECT_EQ(slot.properties.fit, kinlet::MediaReplacementFit::kFill);
    EXPECT_EQ(slot.properties.unknownKeys.size(), 2U);
    EXPECT_EQ(ToText(slot), text);
}

} // namespace
