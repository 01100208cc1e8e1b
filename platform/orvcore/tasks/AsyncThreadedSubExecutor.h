#pragma once

#include <orvcore/tasks/Executor.h>

namespace orvcore {

/// A queue of its own on another executor's threads, running at most a set number of its tasks at a time, in the
/// order in which they were posted. With a concurrency of 1 it is a serial queue: each task sees all that the one
/// before it wrote. It never occupies a thread while its queue is empty.
///
/// It ends in two calls, `Stop` and `Release`; the destructor makes both. None of them waits for the task in progress,
/// so all may be called from anywhere, a task of this executor included.
class ORVPLATFORM_API AsyncThreadedSubExecutor : public Executor {
public:
    AsyncThreadedSubExecutor(std::shared_ptr<Executor> parent, std::size_t concurrency);
    ~AsyncThreadedSubExecutor() override;

    /// Queues `task`; false once stopped, or when the executor underneath refuses work.
    [[nodiscard]] bool Post(OneTimeInvocation task) override;
    std::size_t GetConcurrency() const override;

    /// Ends the taking of work: later posts are refused, queued tasks are destroyed (on this thread), and once the call
    /// returns no further task starts. A task in progress goes on. Later calls do nothing.
    void Stop();

    /// Lets go of the executor underneath, after a `Stop` if there was none. Later calls do nothing.
    void Release();

private:
    struct State;
    const std::shared_ptr<State> state_; // shared with the tasks in progress, which may outlive this object
};

/// A sub-executor of `executor` that runs at most `concurrency` tasks at a time (0 counts as 1).
ORVPLATFORM_API std::shared_ptr<AsyncThreadedSubExecutor> CreateSubExecutor(std::shared_ptr<Executor> executor,
                                                                            std::size_t concurrency);

} // namespace orvcore
