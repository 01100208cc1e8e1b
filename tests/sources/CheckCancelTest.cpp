#include <sources/CheckCancel.h>

#include <tests/support/Latch.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using orvcapsule::CheckCancel;

TEST(CheckCancel, AnAbortIsSeenByEveryLaterCall)
{
    CheckCancel token;
    EXPECT_FALSE(token.GetAbort());
    token.Abort();
    token.Abort();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(token.GetAbort());
    }
    token.Abort();
    EXPECT_TRUE(token.GetAbort());
}

TEST(CheckCancel, NoPollerMissesAnAbortThatAnotherConsumed)
{
    for (int round = 0; round < 300; ++round) {
        CheckCancel token;
        orvtest::Latch start(3);
        std::atomic<bool> aborted = false;
        std::atomic<int> missed = 0;
        const auto poll = [&] {
            start.arrive_and_wait();
            for (bool seen = false; !seen;) {
                const bool mustSee = aborted;
                seen = token.GetAbort();
                if (mustSee && !seen) {
                    ++missed;
                }
            }
            EXPECT_TRUE(token.GetAbort());
        };
        std::thread executor(poll);
        std::thread main(poll);
        start.arrive_and_wait();
        token.Abort();
        aborted = true;
        executor.join();
        main.join();
        ASSERT_EQ(missed, 0);
    }
}

TEST(CheckCancel, TakesItsProgressItemWithIt)
{
    const auto category = std::make_shared<orvappsupport::ProgressCategory>(u8"Get Graphics");
    for (const bool abort : {true, false}) {
        auto token = boost::make_shared<CheckCancel>();
        token->progressCategory = category;
        token->progressItem = category->AddItem(u8"Loading", 0.0, 1.0);
        const auto item = token->progressItem;
        ASSERT_TRUE(category->HasItem(item));
        if (abort) {
            token->Abort();
            EXPECT_FALSE(category->HasItem(item));
        }
        token.reset();
        EXPECT_FALSE(category->HasItem(item));
    }
    CheckCancel withoutCategory;
    withoutCategory.progressItem = category->AddItem(u8"", 0.0, 1.0);
    withoutCategory.Abort();
    EXPECT_TRUE(category->HasItem(withoutCategory.progressItem));
}

} // namespace
