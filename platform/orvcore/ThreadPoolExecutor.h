#pragma once

#include <orvcore/Executor.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace orvcore {

/// An executor over threads of its own, started at the first post.
/// Must not be destroyed by one of its own tasks: the destructor waits for the workers.
class ORVPLATFORM_API ThreadPoolExecutor : public Executor {
public:
    /// A patience that never ends.
    static constexpr std::chrono::milliseconds kForever = std::chrono::milliseconds::max();

    /// A pool of `workers` threads; 0 counts as 1.
    explicit ThreadPoolExecutor(std::size_t workers);
    ~ThreadPoolExecutor() override;

    bool Post(OneTimeInvocation task) override;
    std::size_t GetConcurrency() const override;

    /// Refuses work from now on, drops what is queued, and waits at most `patience` for the tasks that are running.
    /// True when all of them have ended; the workers are then gone and the dropped tasks destroyed. False when a task
    /// still runs, or when called from a task of this pool; no further task starts in that case either, and the
    /// call may be repeated.
    bool Stop(std::chrono::milliseconds patience = kForever);

private:
    struct Threads;

    void Run(OneTimeInvocation& task);
    bool WaitUntilIdle(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds patience);

    const std::size_t workers_;
    std::mutex mutex_;
    std::condition_variable idle_;
    std::size_t running_ = 0;
    bool stopped_ = false;
    std::unique_ptr<Threads> threads_;
};

} // namespace orvcore
