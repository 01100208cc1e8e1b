#include <orvcore/ThreadPoolExecutor.h>

#include <algorithm>
#include <system_error>

namespace orvcore {

namespace {

// The pool whose task this thread is running, so that a stop from inside does not wait for itself.
thread_local const ThreadPoolExecutor* currentPool = nullptr;

} // namespace

ThreadPoolExecutor::ThreadPoolExecutor(std::size_t workers)
    : workers_(std::max<std::size_t>(workers, 1))
{
}

ThreadPoolExecutor::~ThreadPoolExecutor()
{
    Stop();
}

std::size_t ThreadPoolExecutor::GetConcurrency() const
{
    return workers_;
}

bool ThreadPoolExecutor::Post(OneTimeInvocation task)
{
    {
        const std::lock_guard lock(mutex_);
        if (refusing_ || (threads_.empty() && !StartWorkers())) {
            return false;
        }
        queue_.push_back(std::move(task));
    }
    work_.notify_one();
    return true;
}

bool ThreadPoolExecutor::StartWorkers()
{
    threads_.reserve(workers_);
    try {
        while (threads_.size() < workers_) {
            threads_.emplace_back([this] { Work(); });
        }
    } catch (const std::system_error&) {
        return !threads_.empty(); // the system has no thread left: fewer will do
    }
    return true;
}

void ThreadPoolExecutor::Work()
{
    currentPool = this;
    std::unique_lock lock(mutex_);
    for (;;) {
        work_.wait(lock, [this] { return ending_ || (!refusing_ && !queue_.empty()); });
        if (ending_) {
            return;
        }
        OneTimeInvocation task = std::move(queue_.front());
        queue_.pop_front();
        ++running_;
        lock.unlock();
        RunTask(task);
        lock.lock();
        if (--running_ == 0) {
            idle_.notify_all();
        }
    }
}

void ThreadPoolExecutor::Refuse()
{
    const std::lock_guard lock(mutex_);
    refusing_ = true;
}

bool ThreadPoolExecutor::WaitUntilIdle(std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24 * 365); // clocks overflow far beyond it
    std::unique_lock lock(mutex_);
    return currentPool != this && idle_.wait_for(lock, std::min(patience, kLongest), [this] { return running_ == 0; });
}

bool ThreadPoolExecutor::Stop()
{
    std::deque<OneTimeInvocation> dropped; // destroyed outside the lock: what the tasks hold may post or stop in turn
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(mutex_);
        refusing_ = true;
        dropped.swap(queue_);
        if (currentPool == this) {
            return false;
        }
        ending_ = true;
        threads.swap(threads_);
    }
    work_.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }
    return true;
}

} // namespace orvcore
