#include <orvcore/json/JSONSplice.h>

#include <orvcore/json/JSON.h>

#include <gtest/gtest.h>

#include <sstream>

namespace {

using orvcore::serialization::JSONOutline;
using orvcore::serialization::JSONSplice;

bool Throws(const std::string& text)
{
    try {
        orvcore::serialization::ReadOutline(text);
        return false;
    } catch (const orvcore::serialization::json_outline_exception& error) {
        EXPECT_LE(error.GetOffset(), text.size());
        return true;
    }
}

// The scanner must not find values where the reader sees none, nor miss what the reader reads.
TEST(JSONOutline, AgreesWithTheReaderOnWhatIsJSON)
{
    using orvcore::serialization::kMaxJSONDepth;
    std::vector<std::string> texts = {"", "\xEF\xBB\xBF[true,false,null]", "[1|2]", std::string(1000000, '[')};
    std::istringstream list(
        R"({}| [ ] |0|-0.5e+3|"\u00e9\n"|{"a":{"b":[1,2,{}]}}| |{|[1,]|{"a":1,}|{"a"}|{a:1}|[1 2]|01|)"
        R"(1.|.5|1e|+1|-|tru|nulll|"	"|"\x"|"\u12g4"|"open|[]]|{} {}|["a":1]|NaN|'a'|{"\ud83c":1}|[/*c*/])");
    for (std::string text; std::getline(list, text, '|');) {
        texts.push_back(text);
    }
    for (const std::size_t depth : {kMaxJSONDepth, kMaxJSONDepth + 1}) {
        for (const char* inner : {"0", "{ }", "[]"}) {
            texts.push_back(std::string(depth, '[') + inner + std::string(depth, ']'));
        }
    }
    for (const std::string& text : texts) {
        bool readerThrows = false;
        try {
            orvcore::serialization::JSONParse(orvcore::AsUTF8(text));
        } catch (const orvcore::serialization::json_parse_exception&) {
            readerThrows = true;
        }
        EXPECT_EQ(Throws(text), readerThrows) << text.substr(0, 80);
    }
}

TEST(JSONSplice, ChangesOneValueAndKeepsAllOtherBytes)
{
    JSONSplice splice(" { \"a\" : [ ] , \"\\u0062\" : { } , \"a\":1 }\n");
    splice.SetMember(splice.Root(), "a", "[10, 20]"); // the last of the two
    EXPECT_EQ(splice.Text(), " { \"a\" : [ ] , \"\\u0062\" : { } , \"a\":[10, 20] }\n");
    splice.InsertElement(*splice.Root().Find("a"), 1, "15");
    splice.InsertElement(*splice.Root().Find("a"), 0, "5");
    splice.InsertElement(*splice.Root().Find("a"), 9, "25");
    EXPECT_EQ(splice.Text(), " { \"a\" : [ ] , \"\\u0062\" : { } , \"a\":[5,10, 15, 20, 25] }\n");
    splice.SetMember(*splice.Root().Find("b"), "x", "null");
    splice.InsertElement(splice.Root().children[0], 0, "0");
    splice.SetMember(splice.Root(), "c", "2");
    EXPECT_EQ(splice.Text(), " { \"a\" : [0 ] , \"\\u0062\" : {\"x\":null } , \"a\":[5,10, 15, 20, 25], \"c\":2 }\n");

    JSONSplice ordered("{\n  \"b\": 1.0,\n  \"d\": 1E5\n}");
    for (const char* key : {"c", "a", "e"}) {
        ordered.SetMember(ordered.Root(), key, "0");
    }
    EXPECT_EQ(ordered.Text(), "{\n  \"a\": 0,\n  \"b\": 1.0,\n  \"c\": 0,\n  \"d\": 1E5,\n  \"e\": 0\n}");
}

} // namespace
