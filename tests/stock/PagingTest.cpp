#include <tests/stock/StockFixture.h>

#include <manager/GraphicSourceManager.h>
#include <orvcore/tasks/MainThread.h>

#include <algorithm>
#include <atomic>
#include <future>

namespace {

using namespace std::chrono_literals;
using namespace testing;
using orvcapsule::GraphicSourceManager;
using orvcapsule::TemplateType;
using test::Request;
using test::Response;
using test::TextResponse;

/// Tells of its end, which is also the end of its manager.
class Source : public orvcapsule::StockSource {
public:
    Source(std::shared_ptr<orvcapsule::ClientStockConnection> connection, std::promise<void> ended)
        : StockSource(std::move(connection), TemplateType::MotionGraphics)
        , ended_(std::move(ended))
    {
    }
    ~Source() override
    {
        ended_.set_value();
    }

private:
    std::promise<void> ended_;
};

class PagingTest : public test::StockFixture {
protected:
    PagingTest()
    {
        manager->SetStockRequestCallback(std::make_shared<GraphicSourceManager::RequestCallback>(
            [this](GraphicSourceManager::ResultMap& map, int first, int ofAll) {
                told += std::to_string(first) + "+" + std::to_string(map.size()) + " of " + std::to_string(ofAll) + " ";
                for (const auto& [position, entry] : map) {
                    EXPECT_EQ(entry->name, orvcore::ToUTF16(std::to_string(position)));
                    keys.push_back(position);
                }
                onPage();
            }));
        manager->SetStockFailureCallback(std::make_shared<GraphicSourceManager::StockFailureCallback>(
            [this](const orvcapsule::StockSearchFailure& failure) {
                told += std::string(ToText(failure.error)) + " at " + std::to_string(failure.first) + " ";
            }));
        answer = [this](const Request& request) { return Page(request); };
        AddSource();
    }

    void AddSource()
    {
        std::promise<void> over;
        ended.push_back(over.get_future());
        manager->AddGraphicSource(std::make_shared<Source>(Connection(), std::move(over)));
    }

    Response Page(const Request& request)
    {
        const int first = std::stoi(*request.FindQuery("first"));
        const int count = std::stoi(*request.FindQuery("count"));
        if (first == failsAt) {
            return TextResponse(500, "text/plain", "");
        }
        if (first == withheldFrom) {
            return Withheld();
        }
        std::string rows;
        for (int i = first; i < std::min<int>({first + count, first + mostRows, total, end}); ++i) {
            rows += (rows.empty() ? "" : ",") + (R"({"id":"a","title":")" + std::to_string(i) + "\"}");
        }
        return TextResponse(200, "application/json",
                            R"({"total":)" + std::to_string(total) + R"(,"rows":[)" + rows + "]}");
    }

    /// Pumps until the manager and all its requests have ended; the pages that were asked for.
    std::string Finish()
    {
        manager.reset();
        for (std::future<void>& each : ended) {
            EXPECT_EQ(each.wait_for(2min), std::future_status::ready);
        }
        orvcore::RunMainThreadCalls();
        std::string pages;
        for (const Request& request : Requests()) {
            pages += *request.FindQuery("first") + "+" + *request.FindQuery("count") + " ";
        }
        return pages;
    }
    void PumpUntilTold(const std::string& what)
    {
        while (told.find(what) == told.npos) {
            ASSERT_TRUE(orvcore::WaitForMainThreadCalls(2min));
            orvcore::RunMainThreadCalls();
        }
    }

    std::atomic<int> total = 0, end = 100000, mostRows = 100, failsAt = -1, withheldFrom = -1;
    std::shared_ptr<GraphicSourceManager> manager = std::make_shared<GraphicSourceManager>(u"");
    std::vector<std::future<void>> ended;
    std::string told;
    std::vector<int> keys;
    std::function<void()> onPage = [] {};
};

struct PagingCase {
    const char* name;
    int total, mostRows, end, failsAt;
    std::string pages, told;

    /// What a failure names it by.
    friend void PrintTo(const PagingCase& c, std::ostream* out)
    {
        *out << c.name;
    }
};

class PagingCases : public PagingTest, public WithParamInterface<PagingCase> {};

TEST_P(PagingCases, PageByPage)
{
    const PagingCase& c = GetParam();
    total = c.total;
    mostRows = c.mostRows;
    end = c.end;
    failsAt = c.failsAt;
    manager->RequestGraphics({u"term"});
    EXPECT_EQ(Finish(), c.pages);
    EXPECT_EQ(told, c.told);
    EXPECT_TRUE(std::adjacent_find(keys.begin(), keys.end(), [](int a, int b) { return b != a + 1; }) == keys.end());
}

std::string Thousand(const std::string& perPage, const std::string& after)
{
    std::string all;
    for (int first = 0; first < 1000; first += 100) {
        all += std::to_string(first) + perPage + after + " ";
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(
    , PagingCases,
    Values(PagingCase{"None", 0, 100, 1000, -1, "0+100 ", "0+0 of 0 "},
           PagingCase{"OnePage", 100, 100, 1000, -1, "0+100 ", "0+100 of 100 "},
           PagingCase{"ThreePages", 250, 100, 1000, -1, "0+100 100+100 200+50 ",
                      "0+100 of 250 100+100 of 250 200+50 of 250 "},
           PagingCase{"AThousandAtMost", 5000, 100, 9000, -1, Thousand("+100", ""), Thousand("+100", " of 5000")},
           PagingCase{"ShortPages", 150, 60, 1000, -1, "0+100 60+90 120+30 ",
                      "0+60 of 150 60+60 of 150 120+30 of 150 "},
           PagingCase{"RowsEndBeforeTheTotal", 250, 100, 130, -1, "0+100 100+100 130+100 ",
                      "0+100 of 250 100+30 of 250 130+0 of 250 "},
           PagingCase{"AnErrorEndsIt", 250, 100, 1000, 100, "0+100 100+100 ", "0+100 of 250 Refused at 100 "}),
    [](const auto& each) { return each.param.name; });

TEST_F(PagingTest, OnlyAManagerWithOneStockSourceAsks)
{
    total = 1;
    AddSource();
    manager->RequestGraphics({});
    manager->RequestDefaultGraphicSet({}, false);
    EXPECT_EQ(Finish() + told, "");
}

TEST_F(PagingTest, TheFullListingIsASearchWithoutTerms)
{
    total = 1;
    manager->SetSearchFilterType(orvcapsule::kStockFilterFree);
    manager->RequestDefaultGraphicSet({}, true);
    PumpUntilTold("0+1 of 1");
    const Request request = Requests().at(0);
    EXPECT_EQ(*request.FindQuery("gallery_premium"), "false");
    EXPECT_FALSE(request.FindQuery("term"));
    Finish();
}

TEST_F(PagingTest, CancelledBetweenPagesNothingFollows)
{
    total = 1000;
    onPage = [this] { manager->CancelGraphicRequests(); };
    manager->RequestGraphics({});
    PumpUntilTold("0+100");
    Finish();
    EXPECT_EQ(told, "0+100 of 1000 ");
}

// The service never answers, so what ends is not the answer's doing.
TEST_F(PagingTest, EndsWithinAPage)
{
    total = 1000;
    withheldFrom = 100;
    manager->RequestGraphics({u"a"});
    PumpUntilTold("0+100");
    AwaitRequests(2);
    withheldFrom = 0;
    manager->RequestGraphics({u"b"});
    AwaitRequests(3);
    withheldFrom = -1;
    total = 50;
    manager->RequestGraphics({u"c"});
    PumpUntilTold("of 50");
    EXPECT_EQ(told, "0+100 of 1000 0+50 of 50 ") << "the newer search's only";

    withheldFrom = 0;
    manager->RequestGraphics({});
    AwaitRequests(5);
    manager->Shutdown();
    Finish();
    EXPECT_EQ(told, "0+100 of 1000 0+50 of 50 ");
}

} // namespace
