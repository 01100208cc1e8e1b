#include <orvcore/tasks/AsyncThreadedSubExecutor.h>
#include <orvcore/tasks/ParallelFor.h>
#include <orvcore/tasks/detail/ThreadPoolExecutor.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <tests/support/Latch.h>

#include <gtest/gtest.h>

#include <atomic>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using orvcore::ThreadPoolExecutor;

TEST(ThreadPoolExecutor, StopDropsWhatIsQueuedAndRefusesTheRest)
{
    ThreadPoolExecutor pool(1);
    orvtest::Latch running(1);
    orvtest::Latch mayEnd(1);
    auto held = std::make_shared<int>(0);
    std::atomic<bool> queuedRan = false;
    ASSERT_TRUE(pool.Post([&] {
        running.count_down();
        mayEnd.wait();
    }));
    ASSERT_TRUE(pool.Post([&queuedRan, held] { queuedRan = true; }));
    running.wait();
    pool.Refuse();
    EXPECT_FALSE(pool.WaitUntilIdle(std::chrono::milliseconds(0))) << "a task still runs";
    EXPECT_FALSE(pool.Post([] {}));
    mayEnd.count_down();
    EXPECT_TRUE(pool.Stop());
    EXPECT_FALSE(queuedRan);
    EXPECT_EQ(held.use_count(), 1) << "a dropped task is destroyed";
    EXPECT_TRUE(pool.Stop()) << "a second stop is harmless";
}

TEST(ThreadPoolExecutor, StopFromItsOwnTaskDoesNotWaitForItself)
{
    ThreadPoolExecutor pool(2);
    orvtest::Latch stopped(1);
    std::atomic<bool> result = true;
    ASSERT_TRUE(pool.Post([&] {
        result = pool.Stop();
        stopped.count_down();
    }));
    stopped.wait();
    EXPECT_FALSE(result);
}

TEST(ThreadPoolExecutor, ItsLastOwnerMayBeItsOwnTask)
{
    auto pool = std::make_shared<ThreadPoolExecutor>(2);
    orvtest::Latch released(1);
    orvtest::Latch gone(1);
    std::weak_ptr<ThreadPoolExecutor> watched = pool;
    ASSERT_TRUE(pool->Post([&released, &gone, last = pool]() mutable {
        released.wait();
        last.reset();
        gone.count_down();
    }));
    pool.reset();
    released.count_down();
    gone.wait();
    EXPECT_TRUE(watched.expired());
}

TEST(Executor, TaskThatThrowsIsReportedAndTheNextOneRuns)
{
    std::string told;
    orvcore::SetTaskExceptionHandler([&told](const std::exception_ptr& exception) {
        try {
            std::rethrow_exception(exception);
        } catch (const std::exception& e) {
            told += e.what();
        }
        throw std::runtime_error("from the handler");
    });
    const auto serial = orvcore::CreateSubExecutor(orvcore::GetCPUBoundExecutor(), 1);
    orvtest::Latch ended(1);
    ASSERT_TRUE(serial->Post([] { throw std::runtime_error("broken"); }));
    ASSERT_TRUE(serial->Post([] { throw std::runtime_error(" twice"); }));
    ASSERT_TRUE(serial->Post([&] { ended.count_down(); }));
    ended.wait();
    orvcore::SetTaskExceptionHandler(nullptr);
    EXPECT_EQ(told, "broken twice");
}

TEST(AsyncThreadedSubExecutor, ConcurrencyOneKeepsOrderWithoutOverlap)
{
    const auto serial = orvcore::CreateSubExecutor(orvcore::GetCPUBoundExecutor(), 1);
    constexpr int kTasks = 2000;
    std::vector<int> order; // no lock: a data race here is what the thread sanitizer would see
    orvtest::Latch ended(1);
    for (int i = 0; i < kTasks; ++i) {
        ASSERT_TRUE(serial->Post([&order, i] { order.push_back(i); }));
    }
    ASSERT_TRUE(serial->Post([&] { ended.count_down(); }));
    ended.wait();
    std::vector<int> expected(kTasks);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
}

TEST(AsyncThreadedSubExecutor, ConcurrencyLimitIsReachedAndNeverPassed)
{
    const auto pool = std::make_shared<ThreadPoolExecutor>(4);
    const auto two = orvcore::CreateSubExecutor(pool, 2);
    orvtest::Latch bothRun(2);
    orvtest::Latch ended(40);
    std::atomic<int> now = 0;
    std::atomic<int> most = 0;
    for (int i = 0; i < 40; ++i) {
        ASSERT_TRUE(two->Post([&, i] {
            const int running = ++now;
            for (int seen = most; seen < running && !most.compare_exchange_weak(seen, running);) {
            }
            if (i < 2) {
                bothRun.arrive_and_wait(); // never returns if only one task runs at a time
            }
            --now;
            ended.count_down();
        }));
    }
    ended.wait();
    EXPECT_EQ(most, 2);
}

TEST(AsyncThreadedSubExecutor, StopDropsTheQueueAndLetsTheTaskInProgressEnd)
{
    const auto pool = std::make_shared<ThreadPoolExecutor>(1);
    auto serial = orvcore::CreateSubExecutor(pool, 1);
    orvtest::Latch running(1);
    orvtest::Latch mayEnd(1);
    orvtest::Latch ended(1);
    std::atomic<bool> queuedRan = false;
    const auto held = std::make_shared<int>(0);
    ASSERT_TRUE(serial->Post([&] {
        running.count_down();
        mayEnd.wait();
        ended.count_down();
    }));
    ASSERT_TRUE(serial->Post([&queuedRan, held] { queuedRan = true; }));
    running.wait();
    serial->Stop();
    EXPECT_EQ(held.use_count(), 1) << "the queue is emptied at once";
    EXPECT_FALSE(serial->Post([] {}));
    serial->Release();
    serial->Release();
    serial.reset();
    mayEnd.count_down();
    ended.wait();
    orvtest::Latch after(1);
    EXPECT_TRUE(pool->Post([&] { after.count_down(); })) << "the pool underneath goes on";
    after.wait();
    EXPECT_FALSE(queuedRan);
}

TEST(AsyncThreadedSubExecutor, TheLastTaskMayReleaseTheExecutorItRunsOn)
{
    struct Owner {
        std::shared_ptr<orvcore::AsyncThreadedSubExecutor> executor =
            orvcore::CreateSubExecutor(orvcore::GetCPUBoundExecutor(), 1);
        orvtest::Latch* gone = nullptr;
        ~Owner()
        {
            executor.reset();
            gone->count_down();
        }
    };
    orvtest::Latch gone(1);
    auto owner = std::make_shared<Owner>();
    owner->gone = &gone;
    auto* executor = owner->executor.get();
    ASSERT_TRUE(executor->Post([owner = std::move(owner)] {}));
    gone.wait();
}

TEST(AsyncThreadedSubExecutor, RefusesWhenThePoolUnderneathIsStopped)
{
    const auto pool = std::make_shared<ThreadPoolExecutor>(1);
    const auto serial = orvcore::CreateSubExecutor(pool, 1);
    pool->Stop();
    EXPECT_FALSE(serial->Post([] {}));
    EXPECT_FALSE(serial->Post([] {}));
}

TEST(ParallelFor, CoversEveryElementOnceWhateverTheGrain)
{
    for (const std::size_t count : {0U, 1U, 2U, 511U, 513U, 10000U}) {
        for (const std::size_t grain : {std::size_t{0}, std::size_t{1}, std::size_t{7}, count, ~std::size_t{0}}) {
            std::vector<int> touched(count, 0);
            orvcore::ParallelFor(count, grain, [&](std::size_t begin, std::size_t end) {
                for (std::size_t i = begin; i < end; ++i) {
                    ++touched[i];
                }
            });
            EXPECT_EQ(touched, std::vector<int>(count, 1)) << count << " by " << grain;
        }
    }
}

TEST(ParallelFor, NestedInEveryWorkerDoesNotDeadlock)
{
    const std::size_t outer = orvcore::GetCPUBoundExecutor()->GetConcurrency() * 4;
    std::atomic<std::size_t> sum = 0;
    orvcore::ParallelFor(outer, 1, [&](std::size_t, std::size_t) {
        orvcore::ParallelFor(100, 1, [&](std::size_t begin, std::size_t end) { sum += end - begin; });
    });
    EXPECT_EQ(sum, outer * 100);
}

TEST(ParallelFor, FirstExceptionReachesTheCallerAfterRunningPiecesEnded)
{
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> inside = 0;
        EXPECT_THROW(orvcore::ParallelFor(64, 1,
                                          [&](std::size_t begin, std::size_t) {
                                              ++inside;
                                              const auto leave =
                                                  std::shared_ptr<void>(nullptr, [&](void*) { --inside; });
                                              if (begin % 3 == 1) {
                                                  throw std::out_of_range("piece");
                                              }
                                          }),
                     std::out_of_range);
        EXPECT_EQ(inside, 0);
    }
    std::atomic<std::size_t> begun = 0;
    const auto fail = [&](std::size_t, std::size_t) {
        ++begun;
        throw std::out_of_range("piece");
    };
    EXPECT_THROW(orvcore::ParallelFor(10000, 1, fail), std::out_of_range);
    EXPECT_LE(begun, orvcore::GetCPUBoundExecutor()->GetConcurrency() + 1) << "more than one piece on a thread";
}

TEST(ParallelFor, OtherTasksGetTheirTurn)
{
    constexpr std::size_t kPieces = 1000;
    const auto caller = std::this_thread::get_id();
    std::atomic<std::size_t> pieces = 0;
    orvtest::Latch ran(1);
    orvcore::ParallelFor(kPieces, 1, [&](std::size_t, std::size_t) {
        if (std::this_thread::get_id() == caller) {
            return ran.wait(); // so the workers do nearly all
        }
        const std::size_t piece = ++pieces;
        if (piece == 1) {
            ASSERT_TRUE(orvcore::GetCPUBoundExecutor()->Post([&] { ran.count_down(); }));
        } else if (piece > kPieces / 2) {
            ran.wait(); // never returns if the workers stay with the loop
        }
    });
    EXPECT_TRUE(ran.try_wait());
}

TEST(ParallelFor, ACallerThatOnlyWaitsIsToldSo)
{
    const auto caller = std::this_thread::get_id();
    orvtest::Latch begun(1);
    orvtest::Latch told(1);
    const auto piece = [&](std::size_t, std::size_t) {
        if (std::this_thread::get_id() == caller) {
            begun.wait(); // so the other piece is another thread's
        } else {
            begun.count_down();
            told.wait();
        }
    };
    orvcore::ParallelFor(2, 1, piece, [&] {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        told.count_down();
    });
    EXPECT_TRUE(told.try_wait());
}

#if GTEST_HAS_DEATH_TEST
// Exit with work of every kind under way: what runs is waited for or abandoned, and the process ends cleanly.
TEST(ExecutorDeathTest, ExitNeitherCrashesNorHangs)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto leaveBusy = [] {
        static orvcore::NoDestructor<orvtest::Latch> running(2); // a thread still waits
        static orvcore::NoDestructor<orvtest::Latch> never(1);
        static_cast<void>(orvcore::GetPreTerminationExecutor()->Post([] {
            running->count_down();
            never->wait();
        }));
        const auto serial = orvcore::CreateSubExecutor(orvcore::GetCPUBoundExecutor(), 1);
        static_cast<void>(serial->Post([] {
            running->count_down();
            while (!orvcore::IsTerminating()) {
                std::this_thread::yield();
            }
        }));
        for (int i = 0; i < 100; ++i) {
            static_cast<void>(serial->Post([] { std::abort(); })); // queued work never starts once exit began
        }
        running->wait();
        std::exit(7);
    };
    EXPECT_EXIT(leaveBusy(), testing::ExitedWithCode(7), "");
}

TEST(ExecutorDeathTest, ShutdownIsFinal)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto shutDown = [] {
        static_cast<void>(orvcore::GetCPUBoundExecutor()->Post([] {}));
        orvcore::ShutdownExecutors();
        orvcore::ShutdownExecutors();
        std::size_t done = 0;
        orvcore::ParallelFor(10, 1, [&done](std::size_t, std::size_t) { ++done; }); // the caller does it all
        std::exit(done == 10 && !orvcore::GetCPUBoundExecutor()->Post([] {}) ? 7 : 1);
    };
    EXPECT_EXIT(shutDown(), testing::ExitedWithCode(7), "");
}
#endif

} // namespace
