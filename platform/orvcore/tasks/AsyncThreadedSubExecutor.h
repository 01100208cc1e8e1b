#pragma once

#include <orvcore/tasks/Executor.h>

namespace orvcore {

/// A queue whose tasks run on the threads of another executor, the parent: at most `concurrency` of them at a time, in
/// the order in which they were posted. With a concurrency of 1 it is a serial queue: each task sees everything that
/// the task before it wrote. An empty queue occupies no thread.
///
/// It is ended by two calls, `Stop` and `Release`; the destructor makes both. Neither waits for a running task, so both
/// may be called from any thread, also from a task of this executor.
class ORVPLATFORM_API AsyncThreadedSubExecutor : public Executor {
public:
    AsyncThreadedSubExecutor(std::shared_ptr<Executor> parent, std::size_t concurrency);
    ~AsyncThreadedSubExecutor() override;

    /// Queues `task`; false after `Stop`, or when the parent refuses work.
    [[nodiscard]] bool Post(OneTimeInvocation task) override;
    std::size_t GetConcurrency() const override;

    /// Stops accepting work: later posts are refused, queued tasks are destroyed (on this thread), and after the call
    /// no further task starts. A running task goes on. Later calls do nothing.
    void Stop();

    /// Stops, if that was not done, and drops the reference to the parent. Later calls do nothing.
    void Release();

private:
    struct State;
    const std::shared_ptr<State> state_; // shared with the tasks in progress, which may outlive this object
};

/// A sub-executor of `executor` that runs at most `concurrency` tasks at a time (0 counts as 1).
ORVPLATFORM_API std::shared_ptr<AsyncThreadedSubExecutor> CreateSubExecutor(std::shared_ptr<Executor> executor,
                                                                            std::size_t concurrency);

} // namespace orvcore
