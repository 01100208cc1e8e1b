#include <orvappsupport/Progress.h>
#include <orvcore/tasks/MainThread.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <thread>

namespace {

using orvappsupport::ProgressCategory;
using orvappsupport::ProgressEvent;
using orvappsupport::ProgressReport;

class ProgressTest : public testing::Test {
protected:
    void SetUp() override
    {
        orvappsupport::SetProgressObserver([this](const ProgressReport& report) { reports.push_back(report); });
    }
    void TearDown() override
    {
        orvappsupport::SetProgressObserver(nullptr);
        orvcore::RunMainThreadCalls();
    }
    std::vector<ProgressReport> Pump()
    {
        orvcore::RunMainThreadCalls();
        return std::exchange(reports, {});
    }

    std::vector<ProgressReport> reports;
};

TEST_F(ProgressTest, AnItemBeginsChangesAndEnds)
{
    ProgressCategory category(u8"Get Graphics");
    const auto item = category.AddItem(u8"Loading", 0.0, 2.0);
    item->SetText(u8"first");
    item->Advance(0.5);
    EXPECT_TRUE(reports.empty()) << "reports come on the main thread";
    const auto begun = Pump();
    ASSERT_EQ(begun.size(), 2U);
    EXPECT_EQ(begun[0].event, ProgressEvent::Begin);
    EXPECT_EQ(begun[0].categoryTitle, u8"Get Graphics");
    EXPECT_EQ(begun[0].title, u8"Loading");
    EXPECT_EQ(begun[1].event, ProgressEvent::Change);
    EXPECT_EQ(begun[1].text, u8"first");
    EXPECT_EQ(begun[1].GetFraction(), 0.25);

    EXPECT_TRUE(category.HasItem(item));
    EXPECT_TRUE(category.RemoveItem(item));
    EXPECT_FALSE(category.HasItem(item));
    EXPECT_FALSE(category.RemoveItem(item));
    item->SetText(u8"canceled");
    const auto ended = Pump();
    ASSERT_EQ(ended.size(), 2U);
    EXPECT_EQ(ended[0].event, ProgressEvent::End);
    EXPECT_EQ(ended[1].text, u8"canceled") << "why it stopped is still told";
}

TEST_F(ProgressTest, AFloodOfChangesCostsOneReportAPumpAndLosesNoLastState)
{
    ProgressCategory category(u8"");
    const auto item = category.AddItem(u8"", 0.0, 1000.0);
    Pump();
    for (int round = 1; round <= 2; ++round) {
        for (int i = 0; i < 400; ++i) {
            item->Advance(1.0);
        }
        const auto changes = Pump();
        ASSERT_EQ(changes.size(), 1U);
        EXPECT_EQ(changes[0].position, 400.0 * round);
    }
    item->Advance(1.0);
    orvcore::StopMainThreadCalls(); // drops the queued report
    item->Advance(1.0);
    orvcore::StartMainThreadCalls();
    item->Advance(1.0);
    const auto later = Pump();
    ASSERT_EQ(later.size(), 1U);
    EXPECT_EQ(later[0].position, 803.0);
}

TEST_F(ProgressTest, PositionStaysInsideTheRange)
{
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        double lower;
        double upper;
        double position;
        double expectedPosition;
        double expectedFraction;
    };
    const Case cases[] = {
        {0.0, 1.9, 5.0, 1.9, 1.0}, {2.0, 4.0, 3.0, 3.0, 0.5},  {2.0, 4.0, -1.0, 2.0, 0.0},
        {3.0, 1.0, 2.0, 3.0, 0.0}, {0.0, 1.0, kNaN, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0, 0.0},
    };
    ProgressCategory category(u8"");
    for (const Case& c : cases) {
        const auto item = category.AddItem(u8"", c.lower, c.upper);
        item->SetPosition(c.position);
        EXPECT_EQ(item->GetState().position, c.expectedPosition);
        EXPECT_EQ(item->GetState().GetFraction(), c.expectedFraction);
    }
    const auto item = category.AddItem(u8"", 0.0, 10.0);
    item->SetPosition(8.0);
    item->SetRange(0.0, 4.0);
    EXPECT_EQ(item->GetState().position, 4.0);
    item->SetRange(kNaN, 1.0);
    EXPECT_EQ(item->GetState().upper, 4.0);
}

TEST_F(ProgressTest, ACategoryThatGoesEndsItsItemsAndManyThreadsMayWorkOnOne)
{
    auto category = std::make_unique<ProgressCategory>(u8"");
    const auto shared = category->AddItem(u8"shared", 0.0, 400.0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                shared->Advance(1.0);
                const auto own = category->AddItem(u8"own", 0.0, 1.0);
                own->SetTitle(u8"renamed");
                EXPECT_TRUE(category->RemoveItem(own));
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(shared->GetState().position, 400.0);
    category.reset();
    int open = 0;
    for (const auto& report : Pump()) {
        open += report.event == ProgressEvent::Begin ? 1 : report.event == ProgressEvent::End ? -1 : 0;
    }
    EXPECT_EQ(open, 0);
}

} // namespace
