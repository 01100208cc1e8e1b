#include <orvcore/tasks/AsyncThreadedSubExecutor.h>

#include <algorithm>
#include <deque>
#include <mutex>

namespace orvcore {

// The parent never gets the queue's own tasks, but runners: each takes the task that is first in the queue when it gets
// a thread. So tasks start in their order on whatever threads, and `Stop` drops them without asking the parent. A
// runner counts from before it is posted until it finds the queue empty; as many as `concurrency` may count at a time.
//
// Why no task is forgotten: a runner that leaves finds the queue empty and stops counting under one holding of the
// lock, and a thread that queues a task sees under the same lock whether one counts. Why a serial queue is serial: with
// a concurrency of 1 the next runner is posted only when the task has ended, and by the lock each task sees what the
// one before wrote.
struct AsyncThreadedSubExecutor::State : std::enable_shared_from_this<State> {
    State(std::shared_ptr<Executor> executor, std::size_t limit)
        : concurrency(limit)
        , parent(std::move(executor))
    {
    }

    bool Post(OneTimeInvocation task);
    bool PostRunner(const std::shared_ptr<Executor>& executor);
    void RunOne();
    void Stop();

    const std::size_t concurrency;
    std::mutex mutex;
    std::shared_ptr<Executor> parent; // empty after the release
    std::deque<OneTimeInvocation> queue;
    std::size_t runners = 0; // tasks of the parent that run, or will run, one task of the queue each
    bool stopped = false;
};

// The runner holds the state, not the executor: a host may drop the executor while its last task runs.
bool AsyncThreadedSubExecutor::State::PostRunner(const std::shared_ptr<Executor>& executor)
{
    return executor && executor->Post([self = shared_from_this()] { self->RunOne(); });
}

bool AsyncThreadedSubExecutor::State::Post(OneTimeInvocation task)
{
    std::shared_ptr<Executor> executor;
    {
        const std::lock_guard lock(mutex);
        if (stopped) {
            return false;
        }
        queue.push_back(std::move(task));
        if (runners == concurrency) {
            return true; // a runner looks at the queue, under the lock, before it stops counting
        }
        ++runners;
        executor = parent;
    }
    // Outside the lock: the parent has one of its own, and a parent that runs tasks at once would come back here.
    if (PostRunner(executor)) {
        return true;
    }
    Stop(); // the threads underneath are gone for good
    return false;
}

// One task per turn on the parent, so that a long queue does not keep others from its threads. While tasks are left the
// runner posts another one in its place, and the count stays.
void AsyncThreadedSubExecutor::State::RunOne()
{
    OneTimeInvocation task;
    {
        const std::lock_guard lock(mutex);
        if (queue.empty()) {
            --runners;
            return;
        }
        task = std::move(queue.front());
        queue.pop_front();
    }
    // Without the lock. What it throws goes to the host's handler, so the runner always comes to its end.
    RunTask(task);
    std::shared_ptr<Executor> executor;
    {
        const std::lock_guard lock(mutex);
        if (queue.empty()) {
            --runners;
            return;
        }
        executor = parent;
    }
    // The parent refuses for good, so what is queued will never run. `runners` stays too high, which nobody asks any
    // more.
    if (!PostRunner(executor)) {
        Stop();
    }
}

void AsyncThreadedSubExecutor::State::Stop()
{
    std::deque<OneTimeInvocation> dropped; // destroyed outside the lock: what the tasks hold may post or stop in turn
    const std::lock_guard lock(mutex);
    stopped = true;
    dropped.swap(queue);
}

AsyncThreadedSubExecutor::AsyncThreadedSubExecutor(std::shared_ptr<Executor> parent, std::size_t concurrency)
    : state_(std::make_shared<State>(std::move(parent), std::max<std::size_t>(concurrency, 1)))
{
}

AsyncThreadedSubExecutor::~AsyncThreadedSubExecutor()
{
    Release();
}

bool AsyncThreadedSubExecutor::Post(OneTimeInvocation task)
{
    return state_->Post(std::move(task));
}

std::size_t AsyncThreadedSubExecutor::GetConcurrency() const
{
    return state_->concurrency;
}

void AsyncThreadedSubExecutor::Stop()
{
    state_->Stop();
}

void AsyncThreadedSubExecutor::Release()
{
    state_->Stop();
    std::shared_ptr<Executor> released; // goes after the lock: it may be the last reference to the parent
    const std::lock_guard lock(state_->mutex);
    released.swap(state_->parent);
}

std::shared_ptr<AsyncThreadedSubExecutor> CreateSubExecutor(std::shared_ptr<Executor> executor, std::size_t concurrency)
{
    return std::make_shared<AsyncThreadedSubExecutor>(std::move(executor), concurrency);
}

} // namespace orvcore
