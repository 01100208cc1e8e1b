#include <orvcore/ThreadPoolExecutor.h>

#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>

#include <algorithm>

namespace orvcore {

struct ThreadPoolExecutor::Threads {
    explicit Threads(std::size_t count)
        : pool(count)
    {
    }
    boost::asio::thread_pool pool;
};

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
    const std::lock_guard lock(mutex_);
    if (stopped_) {
        return false;
    }
    try {
        if (!threads_) {
            threads_ = std::make_unique<Threads>(workers_);
        }
        boost::asio::post(threads_->pool, [this, task = std::move(task)]() mutable { Run(task); });
        return true;
    } catch (const std::exception&) {
        return false; // no memory or no thread left
    }
}

void ThreadPoolExecutor::Run(OneTimeInvocation& task)
{
    {
        const std::lock_guard lock(mutex_);
        if (stopped_) {
            return; // taken from the queue while the stop was under way
        }
        ++running_;
    }
    currentPool = this;
    RunTask(task);
    currentPool = nullptr;
    const std::lock_guard lock(mutex_);
    if (--running_ == 0) {
        idle_.notify_all();
    }
}

bool ThreadPoolExecutor::WaitUntilIdle(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds patience)
{
    const auto isIdle = [this] { return running_ == 0; };
    if (patience == kForever) {
        idle_.wait(lock, isIdle);
        return true;
    }
    return idle_.wait_for(lock, patience, isIdle);
}

bool ThreadPoolExecutor::Stop(std::chrono::milliseconds patience)
{
    std::unique_ptr<Threads> ended;
    {
        std::unique_lock lock(mutex_);
        stopped_ = true;
        if (threads_) {
            threads_->pool.stop();
        }
        if (currentPool == this || !WaitUntilIdle(lock, patience)) {
            return false;
        }
        ended = std::move(threads_);
    }
    return true; // joins the idle workers and destroys the dropped tasks, outside the lock
}

} // namespace orvcore
