#include <orvcore/tasks/detail/ThreadPoolExecutor.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace orvcore {

// One lock guards all. A pool goes from working to refusing (what is queued stays and does not begin) to ending (the
// workers leave). Each task is notified to one waiting worker; a worker that is not waiting looks at the queue under
// the lock before it waits, so no notice is lost. Refuse notifies no worker: it only makes the workers' condition
// false.
struct ThreadPoolExecutor::State : std::enable_shared_from_this<State> {
    explicit State(std::size_t count)
        : workers(count)
    {
    }

    bool StartWorkers();
    void Work();
    bool IsOwnTask() const;

    const std::size_t workers;
    std::mutex mutex;
    std::condition_variable work;
    std::condition_variable idle;
    std::deque<OneTimeInvocation> queue;
    std::vector<std::thread> threads;
    std::size_t running = 0;
    bool refusing = false;
    bool ending = false; // the workers have to leave; before that they only stop taking work
};

namespace {

// The pool whose task this thread is running, so that a stop from inside does not wait for itself. A worker belongs to
// one pool for its life.
thread_local const void* currentPool = nullptr;

} // namespace

bool ThreadPoolExecutor::State::IsOwnTask() const
{
    return currentPool == this;
}

// With the first task, not before: a program that posts none has no threads of ours.
bool ThreadPoolExecutor::State::StartWorkers()
{
    // Under the lock of Post: the new threads wait for it before they look at the queue.
    threads.reserve(workers);
    try {
        while (threads.size() < workers) {
            threads.emplace_back([self = shared_from_this()] { self->Work(); });
        }
    } catch (const std::system_error&) {
        return !threads.empty(); // the system has no thread left: fewer will do
    }
    return true;
}

void ThreadPoolExecutor::State::Work()
{
    currentPool = this;
    std::unique_lock lock(mutex);
    for (;;) {
        // A pool that refuses keeps its free workers waiting here; only an ending one lets them go.
        work.wait(lock, [this] { return ending || (!refusing && !queue.empty()); });
        if (ending) {
            return;
        }
        ++running;
        {
            OneTimeInvocation task = std::move(queue.front());
            queue.pop_front();
            lock.unlock();
            RunTask(task);
        } // what the task holds goes before the pool counts as idle, and outside the lock
        lock.lock();
        if (--running == 0) {
            idle.notify_all();
        }
    }
}

ThreadPoolExecutor::ThreadPoolExecutor(std::size_t workers)
    : state_(std::make_shared<State>(std::max<std::size_t>(workers, 1)))
{
}

ThreadPoolExecutor::~ThreadPoolExecutor()
{
    if (Stop()) {
        return;
    }
    // The last owner was a task of this pool, whose thread cannot join itself. The workers share the state and leave.
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(state_->mutex);
        state_->ending = true;
        threads.swap(state_->threads);
    }
    state_->work.notify_all();
    for (std::thread& thread : threads) {
        thread.detach();
    }
}

std::size_t ThreadPoolExecutor::GetConcurrency() const
{
    return state_->workers;
}

bool ThreadPoolExecutor::Post(OneTimeInvocation task)
{
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->refusing || (state_->threads.empty() && !state_->StartWorkers())) {
            return false;
        }
        state_->queue.push_back(std::move(task));
    }
    // Outside the lock, so that the worker that wakes finds it free.
    state_->work.notify_one();
    return true;
}

// What is queued stays queued and does not begin: a worker that is free takes no more, and the others end what they do.
void ThreadPoolExecutor::Refuse()
{
    const std::lock_guard lock(state_->mutex);
    state_->refusing = true;
}

bool ThreadPoolExecutor::WaitUntilIdle(std::chrono::milliseconds timeout)
{
    constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24 * 365); // clocks overflow far beyond it
    std::unique_lock lock(state_->mutex);
    // A task that waited for itself would wait for ever.
    return !state_->IsOwnTask() &&
           state_->idle.wait_for(lock, std::min(timeout, kLongest), [this] { return state_->running == 0; });
}

bool ThreadPoolExecutor::Stop()
{
    std::deque<OneTimeInvocation> dropped; // destroyed outside the lock: what the tasks hold may post or stop in turn
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(state_->mutex);
        state_->refusing = true;
        dropped.swap(state_->queue);
        // The thread that would be joined is this one. Work is refused and the queue dropped; the destructor does the
        // rest.
        if (state_->IsOwnTask()) {
            return false;
        }
        state_->ending = true;
        threads.swap(state_->threads);
    }
    state_->work.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }
    return true;
}

} // namespace orvcore
