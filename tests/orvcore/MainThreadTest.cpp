#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/MainThread.h>
#include <tests/support/Latch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using orvcore::AsyncCallFromMainThread;
using orvcore::RunMainThreadCalls;

TEST(MainThread, CallsOfEachThreadKeepTheirOrder)
{
    constexpr int kCalls = 500;
    std::vector<int> seen[2];
    const auto queueAll = [&seen](std::size_t which) {
        for (int i = 0; i < kCalls; ++i) {
            ASSERT_TRUE(AsyncCallFromMainThread([&seen, which, i] { seen[which].push_back(i); }));
        }
    };
    std::thread first(queueAll, 0);
    std::thread second(queueAll, 1);
    std::size_t ran = 0;
    while (ran < 2 * kCalls) {
        ASSERT_TRUE(orvcore::WaitForMainThreadCalls(120s));
        ran += RunMainThreadCalls();
    }
    first.join();
    second.join();
    for (const auto& numbers : seen) {
        ASSERT_EQ(numbers.size(), std::size_t{kCalls});
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    }
}

TEST(MainThread, PumpingFromACallGoesOnInOrder)
{
    std::vector<int> order;
    static_cast<void>(AsyncCallFromMainThread([&] {
        order.push_back(1);
        RunMainThreadCalls();
        order.push_back(3);
    }));
    static_cast<void>(AsyncCallFromMainThread([&] { order.push_back(2); }));
    EXPECT_EQ(RunMainThreadCalls(), 1U);
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST(MainThread, AnUsedUpBudgetLeavesTheRestQueued)
{
    int ran = 0;
    for (int i = 0; i < 3; ++i) {
        static_cast<void>(AsyncCallFromMainThread([&] { ++ran; }));
    }
    EXPECT_EQ(RunMainThreadCalls(0ms), 1U);
    EXPECT_EQ(RunMainThreadCalls(), 2U);
    EXPECT_EQ(ran, 3);
}

TEST(MainThread, ACallThatThrowsDoesNotTakeTheNextWithIt)
{
    int told = 0;
    orvcore::SetTaskExceptionHandler([&told](const std::exception_ptr&) { ++told; });
    bool ran = false;
    static_cast<void>(AsyncCallFromMainThread([] { throw std::runtime_error("host callback"); }));
    static_cast<void>(AsyncCallFromMainThread([&] { ran = true; }));
    EXPECT_EQ(RunMainThreadCalls(), 2U);
    orvcore::SetTaskExceptionHandler(nullptr);
    EXPECT_TRUE(ran);
    EXPECT_EQ(told, 1);
}

TEST(MainThread, StoppedItDropsWhatIsQueuedAndRefusesMore)
{
    const auto held = std::make_shared<int>(0);
    bool ran = false;
    ASSERT_TRUE(AsyncCallFromMainThread([&ran, held] { ran = true; }));
    orvcore::StopMainThreadCalls();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_FALSE(AsyncCallFromMainThread([&ran, held] { ran = true; }));
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(RunMainThreadCalls(), 0U);
    orvcore::StartMainThreadCalls();
    EXPECT_TRUE(AsyncCallFromMainThread([&ran] { ran = true; }));
    EXPECT_EQ(RunMainThreadCalls(), 1U);
    EXPECT_TRUE(ran);
}

TEST(MainThread, DispatcherIsAskedOnceForABurstAndAgainForTheRest)
{
    std::vector<std::function<void()>> eventLoop;
    int ran = 0;
    static_cast<void>(AsyncCallFromMainThread([&] { ++ran; })); // before there is a dispatcher
    orvcore::SetMainThreadDispatcher([&](std::function<void()> run) { eventLoop.push_back(std::move(run)); });
    static_cast<void>(AsyncCallFromMainThread([&] {
        ++ran;
        static_cast<void>(AsyncCallFromMainThread([&] { ++ran; }));
    }));
    ASSERT_EQ(eventLoop.size(), 1U);
    eventLoop[0]();
    EXPECT_EQ(ran, 2);
    ASSERT_EQ(eventLoop.size(), 2U);
    eventLoop[1]();
    EXPECT_EQ(ran, 3);
    orvcore::SetMainThreadDispatcher(nullptr);
    EXPECT_EQ(eventLoop.size(), 2U);
}

TEST(MainThread, ADispatcherThatThrowsIsReportedAndAskedAgain)
{
    int told = 0;
    int asked = 0;
    int ran = 0;
    orvcore::SetTaskExceptionHandler([&told](const std::exception_ptr&) { ++told; });
    orvcore::SetMainThreadDispatcher([&](const std::function<void()>&) {
        if (++asked < 3) {
            throw std::runtime_error("no event loop yet");
        }
    });
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(AsyncCallFromMainThread([&] { ++ran; }));
    }
    EXPECT_EQ(asked, 3);
    EXPECT_EQ(told, 2);
    EXPECT_EQ(RunMainThreadCalls(), 5U);
    orvcore::SetMainThreadDispatcher(nullptr);
    orvcore::SetTaskExceptionHandler(nullptr);
    EXPECT_EQ(ran, 5);
}

TEST(MainThread, ADispatcherIsNotRunningAnyMoreOnceItWasReplaced)
{
    const auto replace = [] { orvcore::SetMainThreadDispatcher(nullptr); };
    for (void (*const end)() : {static_cast<void (*)()>(replace), &orvcore::StopMainThreadCalls}) {
        orvtest::Latch inside(1);
        orvtest::Latch ending(1);
        std::atomic<bool> left = false;
        orvcore::SetMainThreadDispatcher([&](const std::function<void()>&) {
            inside.count_down();
            ending.wait();
            for (int i = 0; i < 1000; ++i) { // long enough for an end that does not wait to come first
                std::this_thread::yield();
            }
            left = true;
        });
        std::thread worker([] { static_cast<void>(AsyncCallFromMainThread([] {})); });
        inside.wait();
        ending.count_down();
        end();
        EXPECT_TRUE(left);
        worker.join();
        orvcore::SetMainThreadDispatcher(nullptr);
        orvcore::StartMainThreadCalls();
        RunMainThreadCalls();
    }
}

TEST(MainThread, ADispatcherIsAskedAgainAfterAStop)
{
    int asked = 0;
    orvcore::SetMainThreadDispatcher([&](const std::function<void()>&) { ++asked; });
    EXPECT_TRUE(AsyncCallFromMainThread([] {}));
    orvcore::StopMainThreadCalls();
    orvcore::StartMainThreadCalls();
    EXPECT_TRUE(AsyncCallFromMainThread([] {}));
    orvcore::SetMainThreadDispatcher(nullptr);
    EXPECT_EQ(RunMainThreadCalls(), 1U);
    EXPECT_EQ(asked, 2);
}

TEST(MainThread, ADispatcherGoesWhereItIsReplaced)
{
    const auto here = std::this_thread::get_id();
    for (int i = 0; i < 100; ++i) {
        std::thread::id goneOn;
        std::shared_ptr<void> held(nullptr, [&](void*) { goneOn = std::this_thread::get_id(); });
        orvtest::Latch inside(1);
        orvcore::SetMainThreadDispatcher([&inside, held](const std::function<void()>&) { inside.count_down(); });
        held.reset();
        std::thread worker([] { static_cast<void>(AsyncCallFromMainThread([] {})); });
        inside.wait();
        orvcore::SetMainThreadDispatcher(nullptr);
        EXPECT_EQ(goneOn, here);
        worker.join();
        RunMainThreadCalls();
    }
}

TEST(MainThread, ADispatcherMayReplaceItself)
{
    int second = 0;
    orvcore::SetMainThreadDispatcher([&](const std::function<void()>&) {
        orvcore::SetMainThreadDispatcher([&](const std::function<void()>&) { ++second; });
    });
    EXPECT_TRUE(AsyncCallFromMainThread([] {}));
    EXPECT_EQ(second, 1);
    orvcore::SetMainThreadDispatcher(nullptr);
    EXPECT_EQ(RunMainThreadCalls(), 1U);
}

} // namespace
