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

TEST(JSONSplice, MakesAllEditsOfOneOutlineInOnePass)
{
    JSONSplice splice("{ \"a\": 1, \"d\": [5], \"e\": {}, \"f\": [], \"g\": {\"x\": [1]} }");
    const auto& root = splice.Root();
    const auto value = [&](const char* key) { return *root.Find(key); };
    for (const char* key : {"c", "b", "h", "a", "c"}) {
        splice.SetMember(root, key, "10");
        splice.SetMember(value("e"), key, "0");
    }
    splice.SetMember(root, "c", "20"); // of several the last
    for (const auto& [list, index, element] :
         {std::tuple("d", 0U, "4"), {"d", 9U, "6"}, {"d", 0U, "3"}, {"d", 9U, "7"}, {"f", 0U, "8"}, {"f", 0U, "7"}}) {
        splice.InsertElement(value(list), index, element);
    }
    splice.Replace(value("d").children[0], "\"five\"");
    splice.InsertElement(*value("g").Find("x"), 0, "0"); // lost with what is replaced
    splice.Replace(value("g"), "null");
    EXPECT_EQ(splice.TextOf(value("d")), "[5]");
    EXPECT_EQ(splice.Text(), "{ \"a\": 10, \"b\": 10, \"c\": 20, \"d\": [4,3,\"five\",6,7], "
                             "\"e\": {\"a\":0,\"b\":0,\"c\":0,\"h\":0}, \"f\": [8,7], \"g\": null, \"h\": 10 }");
    EXPECT_EQ(splice.TextOf(*splice.Root().Find("c")), "20");
    splice.Replace(splice.Root(), "[");
    EXPECT_THROW(static_cast<void>(splice.Text()), orvcore::serialization::json_outline_exception);
}

} // namespace
