#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/Future.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace std::chrono_literals;
using orvcore::Future;
using orvcore::FutureStatus;
using orvcore::Promise;

TEST(Future, EveryOutcomeHasItsStatusAndResultCode)
{
    struct Case {
        const char* name;
        void (*settle)(Promise<std::int32_t>&);
        FutureStatus status;
        std::int32_t code;
    };
    const Case cases[] = {
        {"pending", [](auto&) {}, FutureStatus::Pending, static_cast<std::int32_t>(0xF3610002U)},
        {"ready", [](auto& p) { p.SetValue(-5); }, FutureStatus::Ready, -5},
        {"cancelled by the maker", [](auto& p) { p.Cancel(); }, FutureStatus::Cancelled,
         static_cast<std::int32_t>(0xF3610004U)},
        {"cancelled by the reader", [](auto& p) { p.GetFuture().Cancel(); }, FutureStatus::Cancelled,
         static_cast<std::int32_t>(0xF3610004U)},
        {"maker gone", [](auto& p) { p = Promise<std::int32_t>(); }, FutureStatus::Cancelled,
         static_cast<std::int32_t>(0xF3610004U)},
        {"the first outcome stays",
         [](auto& p) {
             EXPECT_TRUE(p.SetValue(1));
             EXPECT_FALSE(p.SetValue(2));
             EXPECT_FALSE(p.Cancel());
         },
         FutureStatus::Ready, 1},
    };
    for (const Case& c : cases) {
        Promise<std::int32_t> promise;
        const Future<std::int32_t> future = promise.GetFuture();
        c.settle(promise);
        EXPECT_EQ(future.GetStatus(), c.status) << c.name;
        EXPECT_EQ(orvcore::WaitForResultCode(future, 0ms), c.code) << c.name;
        if (c.status != FutureStatus::Ready) {
            try {
                static_cast<void>(future.Get());
                ADD_FAILURE() << c.name;
            } catch (const orvcore::FutureError& e) {
                EXPECT_EQ(e.GetCode(), c.code) << c.name;
            }
        }
    }
    EXPECT_EQ(Future<int>().GetStatus(), FutureStatus::Cancelled);
}

TEST(Future, FailureOfTheWorkReachesTheReader)
{
    Promise<std::int32_t> promise;
    promise.SetException(std::make_exception_ptr(std::out_of_range("work")));
    EXPECT_EQ(promise.GetFuture().GetStatus(), FutureStatus::Failed);
    EXPECT_THROW(orvcore::WaitForResultCode(promise.GetFuture(), 0ms), std::out_of_range);
}

TEST(Future, WaitEndsWhenAnotherThreadSettles)
{
    Promise<std::int32_t> promise;
    const Future<std::int32_t> future = promise.GetFuture();
    ASSERT_TRUE(
        orvcore::GetCPUBoundExecutor()->Post([promise = std::move(promise)]() mutable { promise.SetValue(3); }));
    EXPECT_EQ(orvcore::WaitForResultCode(future, std::chrono::milliseconds::max()), 3);
}

TEST(Future, WorkLearnsThatItsReaderGaveUp)
{
    const Promise<std::int32_t> promise;
    EXPECT_FALSE(promise.IsCancelled());
    EXPECT_TRUE(promise.GetFuture().Cancel());
    EXPECT_TRUE(promise.IsCancelled());
    EXPECT_FALSE(promise.GetFuture().Cancel());
}

} // namespace
