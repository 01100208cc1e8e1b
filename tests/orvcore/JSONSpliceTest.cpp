#include <orvcore/json/JSONSplice.h>

#include <gtest/gtest.h>

namespace {

using orvcore::serialization::JSONSplice;

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
