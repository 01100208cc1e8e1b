#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/MainThread.h>
#include <orvcore/tasks/shared/NoDestructor.h>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

namespace orvcore {

namespace {

// Calls come from any thread and run on the host's main thread, in order. The host either pumps (Run), or installs a
// dispatcher that has its event loop call Run. The dispatcher is asked once for all that is queued, and again when a
// run has left something: an event loop that got an event for each of 10,000 calls would do little else.
//
// No call is forgotten: `dispatched_` is cleared under the lock before a run takes its first call. A call that is
// queued after that asks again; what was queued before is either run or found by the Dispatch at the run's end. No lock
// is held while code of the host runs (calls, the dispatcher, destructors of what they hold): all of it may come back
// here.
class MainThreadQueue {
public:
    bool Push(OneTimeInvocation call)
    {
        {
            const std::lock_guard lock(mutex_);
            if (!accepting_) {
                return false;
            }
            calls_.push_back(std::move(call));
            ++pushed_;
        }
        // Before the dispatcher is asked: a main thread that waits by itself need not wait for the host's function,
        // too.
        queued_.notify_all();
        Dispatch();
        return true;
    }

    std::size_t Run(std::chrono::milliseconds budget)
    {
        const auto start = std::chrono::steady_clock::now();
        std::size_t ran = 0;
        // Calls that are queued during the run wait for the next: one that queues itself again would never let it end.
        for (const std::uint64_t end = BeginRun();;) {
            OneTimeInvocation call = Pop(end);
            if (!call) {
                break;
            }
            RunTask(call);
            ++ran;
            const auto used = std::chrono::steady_clock::now() - start;
            if (std::chrono::duration_cast<std::chrono::milliseconds>(used) >= budget) { // the other way overflows
                break;
            }
        }
        Dispatch(); // for what is left
        return ran;
    }

    bool Wait(std::chrono::milliseconds timeout)
    {
        constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24 * 365); // clocks overflow far beyond it
        std::unique_lock lock(mutex_);
        return queued_.wait_for(lock, std::min(timeout, kLongest), [this] { return !calls_.empty(); });
    }

    void SetDispatcher(MainThreadDispatcher dispatcher)
    {
        auto installed = std::make_shared<Installed>(Installed{std::move(dispatcher)});
        {
            const std::lock_guard lock(mutex_);
            // From here on `installed` is the old one. No thread can enter it any more, only those that are inside it
            // can stay.
            dispatcher_.swap(installed);
            dispatched_ = false;
        }
        if (AwaitReturn(installed)) {
            installed->call = nullptr; // here, not on a worker that has yet to let go of it
        }
        Dispatch();
    }

    void Stop()
    {
        std::deque<OneTimeInvocation> dropped; // destroyed outside the lock
        std::shared_ptr<Installed> installed;
        {
            const std::lock_guard lock(mutex_);
            accepting_ = false;
            dispatched_ = false; // what was asked for may be lost with the host's event loop
            dropped.swap(calls_);
            installed = dispatcher_;
        }
        AwaitReturn(installed);
    }

    void Start()
    {
        const std::lock_guard lock(mutex_);
        accepting_ = true;
    }

private:
    struct Installed {
        MainThreadDispatcher call;
        std::size_t running = 0; // calls under way, guarded by the queue's mutex
    };

    // Until no other thread is inside the dispatcher: its host may unload the code next. From inside one nothing is
    // waited for, and the result is false: it may be the same.
    bool AwaitReturn(const std::shared_ptr<Installed>& installed)
    {
        std::unique_lock lock(mutex_);
        if (!installed || dispatchersOnThisThread != 0) {
            return false;
        }
        returned_.wait(lock, [&] { return installed->running == 0; });
        return true;
    }

    // The number of the first call that this run leaves to the next.
    std::uint64_t BeginRun()
    {
        const std::lock_guard lock(mutex_);
        dispatched_ = false;
        return pushed_;
    }

    OneTimeInvocation Pop(std::uint64_t end)
    {
        const std::lock_guard lock(mutex_);
        if (calls_.empty() || pushed_ - calls_.size() >= end) {
            return {};
        }
        OneTimeInvocation call = std::move(calls_.front());
        calls_.pop_front();
        return call;
    }

    void Dispatch()
    {
        std::shared_ptr<Installed> dispatcher;
        {
            const std::lock_guard lock(mutex_);
            if (dispatched_ || calls_.empty() || !dispatcher_ || !dispatcher_->call) {
                return;
            }
            dispatched_ = true;
            dispatcher = dispatcher_;
            ++dispatcher->running;
        }
        const bool asked = Ask(dispatcher->call);
        {
            const std::lock_guard lock(mutex_);
            --dispatcher->running;
            if (!asked && dispatcher == dispatcher_) {
                dispatched_ = false; // the next call asks again
            }
        }
        returned_.notify_all();
    }

    // False when the host's function threw, which is reported: the thread that queues has no part in it.
    static bool Ask(const MainThreadDispatcher& dispatcher) noexcept
    {
        bool asked = false;
        OneTimeInvocation ask([&] {
            dispatcher([] { RunMainThreadCalls(); });
            asked = true;
        });
        ++dispatchersOnThisThread;
        RunTask(ask);
        --dispatchersOnThisThread;
        return asked;
    }

    static thread_local int dispatchersOnThisThread;

    std::mutex mutex_;
    std::condition_variable queued_;
    std::condition_variable returned_;
    std::deque<OneTimeInvocation> calls_;
    std::uint64_t pushed_ = 0; // calls ever queued; the front's number is this less the queue's length
    std::shared_ptr<Installed> dispatcher_;
    bool dispatched_ = false; // the event loop was asked and has not come yet
    bool accepting_ = true;
};

thread_local int MainThreadQueue::dispatchersOnThisThread = 0;

MainThreadQueue& TheQueue()
{
    static NoDestructor<MainThreadQueue> queue;
    return *queue;
}

} // namespace

bool AsyncCallFromMainThread(OneTimeInvocation call)
{
    return TheQueue().Push(std::move(call));
}

std::size_t RunMainThreadCalls(std::chrono::milliseconds budget)
{
    return TheQueue().Run(budget);
}

bool WaitForMainThreadCalls(std::chrono::milliseconds timeout)
{
    return TheQueue().Wait(timeout);
}

void SetMainThreadDispatcher(MainThreadDispatcher dispatcher)
{
    TheQueue().SetDispatcher(std::move(dispatcher));
}

void StopMainThreadCalls()
{
    TheQueue().Stop();
}

void StartMainThreadCalls()
{
    TheQueue().Start();
}

} // namespace orvcore
