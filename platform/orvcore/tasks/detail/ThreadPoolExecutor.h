#pragma once

#include <orvcore/tasks/Executor.h>

#include <chrono>
#include <cstddef>
#include <memory>

namespace orvcore {

/// An executor over threads of its own, started at the first post. The destructor does as `Stop` does: when the last
/// owner is one of the pool's own tasks, the workers end by themselves after it.
class ORVPLATFORM_API ThreadPoolExecutor : public Executor {
public:
    /// A pool of `workers` threads; 0 counts as 1.
    explicit ThreadPoolExecutor(std::size_t workers);
    ~ThreadPoolExecutor() override;

    [[nodiscard]] bool Post(OneTimeInvocation task) override;
    std::size_t GetConcurrency() const override;

    /// Refuses work from now on; what is queued will not start. Tasks that run go on. Waits for nothing and destroys
    /// nothing.
    void Refuse();

    /// Waits, at most for `timeout`, until no task runs; true when that is so. Called from a task of this pool it
    /// answers false at once.
    bool WaitUntilIdle(std::chrono::milliseconds timeout);

    /// Ends the pool: refuses work, destroys what is queued, and returns when the tasks that were running, and the
    /// workers, have ended. Called from a task of this pool it waits for neither and answers false. May be repeated.
    bool Stop();

private:
    struct State;
    std::shared_ptr<State> state_; // each worker has a share: it may outlive the pool
};

} // namespace orvcore
