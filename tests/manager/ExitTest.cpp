#include <tests/support/RunProgram.h>
#include <tests/support/TempFolder.h>
#include <tests/support/ZipBytes.h>

#include <gtest/gtest.h>

namespace {

// `main` returns while the workers read definitions so large that each takes a parser of its own.
TEST(ExitTest, AProcessMayEndInTheMiddleOfAListing)
{
    std::string definition = R"({"apiVersion":"2.2","filler":[0)";
    while (definition.size() < std::size_t{5} << 18) {
        definition += R"(,"the filler makes this definition larger than any real one, with few values")";
    }
    const test::TempFolder folder;
    folder.Write("root/0.zelt", test::ZipBytes().Add({"definition.json", definition + "]}"}).Finish());
    for (int i = 1; i < 200; ++i) {
        std::filesystem::create_hard_link(folder / "root/0.zelt", folder / ("root/" + std::to_string(i) + ".zelt"));
    }
    const std::string place = orvcore::ToNarrow(orvcore::PathToUTF8(folder.Path()));
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(orvtest::RunProgram(ORV_LISTING_EXIT, {place, "return"}), 0);
        EXPECT_EQ(orvtest::RunProgram(ORV_LISTING_EXIT, {place, "shutdown"}), 0);
    }
}

} // namespace
