#include <orvcore/json/JSON.h>
#include <orvcore/json/JSONOutline.h>
#include <orvcore/json/JSONTextWriter.h>
#include <orvcore/json/shared/JSONDocument.h>
#include <orvcore/json/shared/JSONListText.h>
#include <orvcore/json/shared/JSONTable.h>
#include <orvcore/text/shared/BinaryText.h>

#include <gmock/gmock.h>

#include <bit>
#include <chrono>
#include <random>
#include <sstream>

namespace {

using namespace orvcore::serialization;
using namespace std::string_view_literals;

std::string Compact(const Variant& value)
{
    return orvcore::ToNarrow(GetJSONUTF8String(value, false));
}

TEST(JSONParse, TextsThatReadAndHowTheyAreWrittenAgain)
{
    struct Case {
        std::u8string_view text;
        std::string_view written;
    };
    const Case cases[] = {
        {u8"null", "null"},
        {u8" [ ] ", "[]"},
        {u8"\uFEFF{}", "{}"}, // a byte-order mark
        {u8R"({"b":1,"a":2})", R"({"a":2,"b":1})"},
        {u8R"({"a":1,"a":[2]})", R"({"a":[2]})"}, // the last of equal keys
        {u8R"({"":{"":""}})", R"({"":{"":""}})"},
        {u8"[-9223372036854775808,9223372036854775807,9223372036854775808,18446744073709551615]",
         "[-9223372036854775808,9223372036854775807,9223372036854775808,18446744073709551615]"},
        {u8"[50.0,5e1,-0.0,1e-7,1.5e300]", "[50.0,50.0,-0.0,1e-07,1.5e+300]"},
        {u8R"(["\u0041\ud83d\ude00\"\\\/\b\f\n\r\t\u0000\u001f"])", R"(["A😀\"\\/\b\f\n\r\t\u0000\u001f"])"},
        {u8R"([true,false,null,"字"])", R"([true,false,null,"字"])"},
        {u8R"(["\"100000000000000000000",100000000000000000000,{"a":-9223372036854775809},18446744073709551616])",
         R"(["\"100000000000000000000",1e+20,{"a":-9223372036854775808.0},18446744073709551616.0])"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Compact(JSONParse(c.text)), c.written);
        EXPECT_NO_THROW(ReadOutline(orvcore::AsNarrow(c.text))) << c.written;
        EXPECT_EQ(Compact(JSONDocument::Parse(c.text).Root().ToTree()), c.written);
    }
}

TEST(JSONParse, TextsThatAreRefused)
{
    using namespace std::string_literals;
    std::vector<std::string> texts = {"", "\"\t\"", "\xEF\xBB\xBF", "\xEF\xBB\xBF\xEF\xBB\xBF{}", "\0"s, "[1]\0"s};
    std::istringstream list(
        " |{|[1,]|{\"a\":1,}|{a:1}|[1]x|'a'|nul|[01]|[1.]|[+1]|[NaN]|[0100000000000000000000]|{\"a\"}|"
        "[1 2]|.5|1e|-|nulll|[]]|{} {}|[\"a\":1]|[/*c*/]|\"open|[100000000000000000000,]|"
        "[--100000000000000000000]|\"\\x\"|\"\\u12\"|{\"\\udfff\":1}");
    for (std::string text; std::getline(list, text, '|');) {
        texts.push_back(text);
    }
    for (const std::string& text : texts) {
        EXPECT_THROW(JSONParse(orvcore::AsUTF8(text)), json_parse_exception) << text;
        try {
            ReadOutline(text);
            ADD_FAILURE() << text;
        } catch (const json_outline_exception& error) {
            EXPECT_LE(error.GetOffset(), text.size());
        }
    }
    // What a number or a text comes to is not the outline's concern.
    for (const char* text : {"[1e400]", "\"\x80\"", "\"\xED\xA0\x80\"", "\"\xC0\x80\"", "\"\xF4\x90\x80\x80\"",
                             "\"\\ud800\"", "\"\\udc00\"", "\"\\ud800\\u0041\"", "\"\\ud800x\""}) {
        EXPECT_THROW(JSONParse(orvcore::AsUTF8(text)), json_parse_exception) << text;
        EXPECT_NO_THROW(ReadOutline(text)) << text;
    }
}

// A text that is parsed where it lies has other bytes behind it. Each part of a text that begins with it is a text of
// its own here, and what follows would make another of it.
TEST(JSONDocument, BytesBehindATextDoNotCount)
{
    const auto read = [](std::u8string_view text, std::size_t room) {
        try {
            return Compact(JSONDocument::Parse(text, room).Root().ToTree());
        } catch (const json_parse_exception& error) {
            return std::string(error.what());
        }
    };
    for (const std::u8string_view whole :
         {u8R"([[12.5e3,-7,true],{"a":"b\u0041\\","字":null}])"sv, u8"12345"sv, u8"-0.25e-7"sv, u8"false"sv,
          u8R"("a text \" and more, beyond one step of the parser's 😀")"sv, u8"\uFEFF[100000000000000000000]"sv}) {
        for (const char8_t filler : u8"]}\"1,e\\\xFF "sv) {
            const std::u8string full = std::u8string(whole) + std::u8string(kJSONTextRoom, filler);
            for (std::size_t size = 0; size <= whole.size(); ++size) {
                const std::u8string_view text(full.data(), size);
                EXPECT_EQ(read(text, full.size() - size), read(std::u8string(text), 0)) << orvcore::ToNarrow(text);
            }
        }
    }
}

TEST(JSONParse, NestingIsBoundedAndRefusedAtOnce)
{
    const auto nested = [](std::size_t depth) {
        return std::u8string(depth, u8'[') + u8'0' + std::u8string(depth, u8']');
    };
    EXPECT_EQ(Compact(JSONParse(nested(kMaxJSONDepth))), orvcore::AsNarrow(nested(kMaxJSONDepth)));
    EXPECT_NO_THROW(ReadOutline(orvcore::AsNarrow(nested(kMaxJSONDepth))));
    std::u8string objects;
    for (int i = 0; i < 1'000'000; ++i) {
        objects += u8"{\"a\":";
    }
    const std::u8string refused[] = {nested(kMaxJSONDepth + 1), nested(1'000'000), std::u8string(1'000'000, u8'['),
                                     objects};
    const auto before = std::chrono::steady_clock::now();
    for (const std::u8string& text : refused) {
        EXPECT_THROW(JSONParse(text), json_parse_exception);
        EXPECT_THROW(ReadOutline(orvcore::AsNarrow(text)), json_outline_exception);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(20)); // a machine may be busy

    Variant tree;
    for (std::size_t i = 0; i < kMaxJSONDepth + 2; ++i) {
        tree = Variant(Array{std::make_shared<Variant>(std::move(tree))});
    }
    EXPECT_THROW(GetJSONUTF8String(tree, false), json_write_exception);
}

TEST(JSONParse, SizeAndNumberOfValuesAreBounded)
{
    const auto list = [](std::string_view element, std::size_t count) {
        std::string text = "[";
        for (std::size_t i = 0; i < count; ++i) {
            text.append(i == 0 ? "" : ",").append(element);
        }
        return text + ']';
    };
    struct Case {
        std::string text;
        bool isRead;
    };
    const Case cases[] = {
        {list("0", kMaxJSONValues - 1), true},
        {list("0", kMaxJSONValues), false},
        {list("{ }", kMaxJSONValues - 1), true},
        {list("[\n]", kMaxJSONValues), false},
        {list("[0]", kMaxJSONValues / 2), false},
        {list(R"({"[,":"\",{"})", kMaxJSONValues / 2 - 1), true}, // texts hold no values
        {'"' + std::string(kMaxJSONSize - 2, ',') + '"', true},
        {'"' + std::string(kMaxJSONSize - 1, ',') + '"', false},
    };
    for (const Case& c : cases) {
        bool isRead = true;
        try {
            JSONDocument::Parse(orvcore::AsUTF8(c.text));
        } catch (const json_parse_exception&) {
            isRead = false;
        }
        EXPECT_EQ(isRead, c.isRead) << c.text.size() << ' ' << c.text.substr(0, 20);
    }
}

TEST(JSONWrite, DoublesComeBackBitForBit)
{
    std::mt19937_64 generator(1);
    for (int i = 0; i < 20000; ++i) {
        const auto value = std::bit_cast<double>(generator());
        if (!std::isfinite(value)) {
            continue;
        }
        const Variant back = JSONParse(GetJSONUTF8String(Variant(value), false));
        ASSERT_EQ(back.type(), typeid(double)) << value;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(std::any_cast<double>(back)), std::bit_cast<std::uint64_t>(value));
    }
}

TEST(JSONWrite, NumbersThatAreNotFiniteAreRefusedByKey)
{
    for (const double value : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity()}) {
        Variant object;
        AddToObject(object, u8"max", 1.0);
        AddToObject(object, u8"min", Array{std::make_shared<Variant>(value)});
        try {
            GetJSONUTF8String(object, false);
            ADD_FAILURE() << value;
        } catch (const json_write_exception& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr("\"min\""));
        }
    }
    EXPECT_THROW(GetJSONUTF8String(Variant(std::string("foreign")), false), json_write_exception);
}

TEST(JSONWrite, FormattedTextReadsTheSame)
{
    const Variant tree = JSONParse(u8R"({"a":[1,{"b":[]}],"c":{},"d":"x"})");
    const auto text = GetJSONUTF8String(tree, true);
    EXPECT_EQ(text, u8"{\n  \"a\": [\n    1,\n    {\n      \"b\": []\n    }\n  ],\n  \"c\": {},\n  \"d\": \"x\"\n}");
    EXPECT_EQ(Compact(JSONParse(text)), Compact(tree));
}

TEST(JSONWrite, IllFormedTextIsMended)
{
    EXPECT_EQ(Compact(Variant(orvcore::ToUTF8("a\xFFz"sv))), "\"a\uFFFDz\"");
    JSONTextWriter writer;
    writer.String(u"\xD800\"x"sv);
    EXPECT_EQ(writer.Take(), u8"\"\uFFFD\\\"x\"");
}

TEST(JSONTree, ObjectsAnswerAndChange)
{
    Variant object;
    EXPECT_FALSE(ObjectHasProperty(object, u8"k"));
    EXPECT_TRUE(AddToObject(object, u8"k", true));
    EXPECT_FALSE(AddToObject(object, u8"k", false));
    EXPECT_EQ(Compact(GetVariantInObject(object, u8"k")), "true");
    UpdateInObject(object, u8"k", std::uint64_t{7});
    EXPECT_EQ(Compact(object), R"({"k":7})");
    try {
        GetVariantInObject(object, u8"größe");
        ADD_FAILURE();
    } catch (const missing_key_exception& error) {
        EXPECT_EQ(error.GetKey(), "größe");
    }
    EXPECT_THROW(GetVariantInObject(JSONParse(u8"[]"), u8"k"), missing_key_exception);
}

TEST(JSONNode, NumbersConvertWhereNoDigitIsLost)
{
    struct Case {
        std::u8string_view text;
        std::optional<std::int64_t> asInt;
        std::optional<std::uint64_t> asUInt;
        std::optional<double> asDouble;
    };
    constexpr std::int64_t low = std::numeric_limits<std::int64_t>::min();
    const Case cases[] = {
        {u8"5", 5, 5, 5.0},
        {u8"5.0", 5, 5, 5.0},
        {u8"-5e0", -5, {}, -5.0},
        {u8"5.5", {}, {}, 5.5},
        {u8"9007199254740993", 9007199254740993, 9007199254740993, {}},
        {u8"9223372036854775807", 9223372036854775807, 9223372036854775807, {}},
        {u8"9223372036854775808", {}, 9223372036854775808U, 0x1p63},
        {u8"18446744073709551615", {}, ~0ULL, {}},
        {u8"-9223372036854775808", low, {}, -0x1p63},
        {u8"-9223372036854775808.0", {}, {}, -0x1p63}, // the next row's double
        {u8"-9223372036854775809", {}, {}, -0x1p63},
        {u8"100000000000000000001", {}, {}, 1e20},
        {u8"9223372036854775808.0", {}, 9223372036854775808U, 0x1p63},
        {u8"18446744073709551616.0", {}, {}, 0x1p64},
        {u8"\"5\"", {}, {}, {}},
        {u8"true", {}, {}, {}},
    };
    for (const Case& c : cases) {
        const JSONDocument document = JSONDocument::Parse(c.text);
        const JSONNode& node = document.Root();
        const auto as = [&node](auto number) { return node.Get(number) ? std::optional(number) : std::nullopt; };
        EXPECT_EQ(as(std::int64_t{}), c.asInt) << orvcore::AsNarrow(c.text);
        EXPECT_EQ(as(std::uint64_t{}), c.asUInt) << orvcore::AsNarrow(c.text);
        EXPECT_EQ(as(double{}), c.asDouble) << orvcore::AsNarrow(c.text);
    }
}

TEST(JSONLists, LongListsKeepTheirOrderAndCarryErrors)
{
    using orvcore::serialization::detail::Codec;
    using Texts = std::vector<std::string>;
    for (const std::size_t count : {0U, 1U, 512U, 513U, 640U, 10007U}) {
        Texts list;
        for (std::size_t i = 0; i < count; ++i) {
            list.push_back(std::to_string(i));
        }
        EXPECT_EQ(Compact(orvcore::serialization::detail::ToTree(list)),
                  orvcore::AsNarrow(orvcore::serialization::detail::ToText(list)));
        JSONTextWriter formatted(true);
        const std::vector<Texts> inner = {list};
        Codec<std::vector<Texts>>::Write(formatted, inner);
        EXPECT_EQ(formatted.Take(), GetJSONUTF8String(orvcore::serialization::detail::ToTree(inner), true));
        Texts back;
        const auto text = orvcore::serialization::detail::ToText(list);
        ASSERT_TRUE(Codec<Texts>::Read(JSONDocument::Parse(text).Root(), back));
        EXPECT_EQ(back, list);
    }
    // However long a list is, its tree holds the same types.
    const Variant tree = orvcore::serialization::detail::ToTree(std::vector<std::uint32_t>(600, 7));
    for (const VariantPtr& element : *AsArray(tree)) {
        ASSERT_EQ(element->type(), typeid(std::uint64_t));
    }
    std::vector<double> numbers(3000, 0.5);
    numbers[2999] = std::numeric_limits<double>::quiet_NaN();
    JSONTextWriter writer;
    writer.BeginObject();
    writer.Key("samples");
    try {
        Codec<std::vector<double>>::Write(writer, numbers);
        ADD_FAILURE();
    } catch (const json_write_exception& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("\"samples\""));
    }
}

TEST(JSONListText, AListIsReadInPieces)
{
    const struct {
        std::string text;
        std::string rest;
        std::vector<std::string> elements;
    } cases[] = {
        {R"({"list":[],"a":1})", R"({"a":1,"list":[]})", {}},
        {R"({ "list" : [ 1 , {"x":[2,"],"]} ,"\",,[" ] , "a":[3]})",
         R"({"a":[3],"list":[]})",
         {"1", R"({"x":[2,"],"]})", R"("\",,[")"}},
        {"\xEF\xBB\xBF{\"li\\u0073t\":[[],[null]]}", R"({"list":[]})", {"[]", "[null]"}},
        {R"({"list":[1],"list":[2,{"list":3}]})", R"({"list":[]})", {"2", R"({"list":3})"}},
        {R"({"list":[1],"list":2})", R"({"list":2})", {}},
        {R"({"x":{"list":[1]}})", R"({"x":{"list":[1]}})", {}},
        {R"(["list",[1]])", R"(["list",[1]])", {}},
    };
    for (const auto& c : cases) {
        const JSONListText list(c.text, "list");
        EXPECT_EQ(Compact(list.Rest().Root().ToTree()), c.rest) << c.text;
        ASSERT_EQ(list.Count(), c.elements.size()) << c.text;
        for (std::size_t first = 0; first < list.Count(); ++first) {
            std::string expected;
            for (std::size_t last = first + 1; last <= list.Count(); ++last) {
                expected += (expected.empty() ? "" : ",") + c.elements[last - 1];
                EXPECT_EQ(Compact(list.Read(first, last).Root().ToTree()), '[' + expected + ']') << c.text;
            }
        }
    }
    for (const char* bad :
         {"", R"({"list":[1})", R"({"list":[1 2]})", R"({"list":[1],})", R"({"list":[1],"a":tru})", R"({"list":[1]}})",
          R"({"list":["a]})", "{\"list\":[\"\xFF\"]}", R"({"list":[1,]})", "{\"list\":[\"\n\"]}"}) {
        EXPECT_THROW(JSONListText(bad, "list"), json_parse_exception) << bad;
    }
    const JSONListText damaged(R"({"list":[1,{"a" 2},[},tru,5]})", "list");
    ASSERT_EQ(damaged.Count(), 5U);
    for (const std::size_t at : {1U, 2U, 3U}) {
        EXPECT_THROW(damaged.Read(at, at + 1), json_parse_exception) << at;
    }
    EXPECT_EQ(Compact(damaged.Read(4, 5).Root().ToTree()), "[5]");
}

TEST(BinaryText, IsPaddedBase64)
{
    struct Case {
        std::vector<std::uint8_t> bytes;
        std::u8string_view text;
    };
    const Case cases[] = {{{}, u8""},
                          {{'f'}, u8"Zg=="},
                          {{'f', 'o'}, u8"Zm8="},
                          {{'f', 'o', 'o'}, u8"Zm9v"},
                          {{0xFB, 0xFF, 0x00, 0x10}, u8"+/8AEA=="}};
    for (const Case& c : cases) {
        EXPECT_EQ(orvcore::EncodeBinaryDataToUTF8String(c.bytes), c.text);
        EXPECT_EQ(orvcore::DecodeBinaryDataFromUTF8String(c.text), c.bytes);
    }
    for (const std::u8string_view bad : {u8"Z", u8"Zg", u8"Zg=", u8"Zh==", u8"Zm9=", u8"Z===", u8"====", u8"Zm9v\n",
                                         u8"Zm-_", u8"Zg==Zg==", u8"=g==", u8"Zé=="}) {
        EXPECT_FALSE(orvcore::DecodeBinaryDataFromUTF8String(bad)) << orvcore::AsNarrow(bad);
    }
}

} // namespace
