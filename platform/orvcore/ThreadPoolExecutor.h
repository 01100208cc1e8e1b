#pragma once

#include <orvcore/Executor.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace orvcore {

/// An executor over threads of its own, started at the first post.
/// Must not be destroyed by one of its own tasks: the destructor waits for the workers.
class ORVPLATFORM_API ThreadPoolExecutor : public Executor {
public:
    /// A pool of `workers` threads; 0 counts as 1.
    explicit ThreadPoolExecutor(std::size_t workers);
    ~ThreadPoolExecutor() override;

    bool Post(OneTimeInvocation task) override;
    std::size_t GetConcurrency() const override;

    /// Refuses work from now on; what is queued will not start. Tasks that run go on. Waits for nothing and destroys
    /// nothing.
    void Refuse();

    /// Waits, at most for `patience`, until no task runs; true when that is so. Called from a task of this pool it
    /// answers false at once.
    bool WaitUntilIdle(std::chrono::milliseconds patience);

    /// Ends the pool: refuses work, destroys what is queued, and returns when the tasks that were running, and the
    /// workers, have ended. Called from a task of this pool it waits for neither and answers false. May be repeated.
    bool Stop();

private:
    void Work();
    bool StartWorkers();

    const std::size_t workers_;
    std::mutex mutex_;
    std::condition_variable work_;
    std::condition_variable idle_;
    std::deque<OneTimeInvocation> queue_;
    std::vector<std::thread> threads_;
    std::size_t running_ = 0;
    bool refusing_ = false;
    bool ending_ = false; // the workers have to leave; before that they only stop taking work
};

} // namespace orvcore
