#include <tests/stock/StockFixture.h>
#include <tests/support/RunProgram.h>
#include <tests/support/TempFolder.h>

namespace {

class StockExitTest : public test::StockFixture, public testing::WithParamInterface<const char*> {};

TEST_P(StockExitTest, AProcessMayEndInTheMiddle)
{
    answer = [this](const test::Request& request) {
        return request.path == "/answered" ? test::TextResponse(200, "text/plain", "") : Withheld();
    };
    EXPECT_EQ(RequestCount(), 0U); // its lock hands the answer to the server's threads: another process asks
    const test::TempFolder folder;
    const std::string place = orvcore::ToNarrow(orvcore::PathToUTF8(folder.Path()));
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(orvtest::RunProgram(ORV_STOCK_EXIT, {orvcore::ToNarrow(URL(u8"")), place, GetParam()}), 0);
    }
    if (std::filesystem::path::preferred_separator == '/') { // elsewhere the system ends the thread first
        EXPECT_THAT(folder.Names(), testing::IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(, StockExitTest, testing::Values("return", "shutdown", "terminate", "handler"),
                         [](const auto& each) { return std::string(each.param); });

} // namespace
