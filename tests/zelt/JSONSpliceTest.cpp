#include <tools/zelt/JSONSplice.h>

#include <orvcore/json/JSON.h>

#include <gtest/gtest.h>

namespace {

using zelt::JSONOutline;
using zelt::JSONSplice;

bool Throws(const std::string& text)
{
    try {
        zelt::ReadOutline(text);
        return false;
    } catch (const zelt::OutlineError& error) {
        EXPECT_LE(error.GetOffset(), text.size());
        return true;
    }
}

// The scanner must not find values where the reader sees none, nor miss what the reader reads.
TEST(JSONOutline, AgreesWithTheReaderOnWhatIsJSON)
{
    for (const std::string text : {"{}",
                                   " [ ] ",
                                   "0",
                                   "-0.5e+3",
                                   "\"\\u00e9\\n\"",
                                   "{\"a\":{\"b\":[1,2,{}]}}",
                                   "\xEF\xBB\xBF[true,false,null]",
                                   "",
                                   " ",
                                   "{",
                                   "[1,]",
                                   "{\"a\":1,}",
                                   "{\"a\"}",
                                   "{a:1}",
                                   "[1 2]",
                                   "01",
                                   "1.",
                                   ".5",
                                   "1e",
                                   "+1",
                                   "-",
                                   "tru",
                                   "nulll",
                                   "\"\t\"",
                                   "\"\\x\"",
                                   "\"\\u12g4\"",
                                   "\"open",
                                   "[]]",
                                   "{} {}",
                                   "[\"a\":1]",
                                   "NaN",
                                   "'a'",
                                   "{\"\\ud83c\":1}",
                                   "[/*c*/]"}) {
        bool readerThrows = false;
        try {
            orvcore::serialization::JSONParse(orvcore::AsUTF8(text));
        } catch (const orvcore::serialization::json_parse_exception&) {
            readerThrows = true;
        }
        EXPECT_EQ(Throws(text), readerThrows) << text;
    }
}

TEST(JSONOutline, NestingIsBounded)
{
    const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    EXPECT_FALSE(Throws(nested(orvcore::serialization::kMaxJSONDepth)));
    EXPECT_TRUE(Throws(nested(orvcore::serialization::kMaxJSONDepth + 1)));
    EXPECT_TRUE(Throws(std::string(1000000, '[')));
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
}

} // namespace
