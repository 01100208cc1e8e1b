#include <orvcore/tasks/shared/GrowingLoop.h>

#include <orvcore/tasks/Executor.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>

namespace orvcore {

// Workers are invited by tasks, one piece a task: a loop of many pieces shares the executor with what others post.
//
// The elements below `next` are taken, those from `next` to `count` wait. Each piece is taken under the lock, so by one
// thread alone, and the loop has ended when nothing waits and `running` is 0. `invited` counts tasks of this loop that
// are in the executor; such a task stops counting only under the lock and when nothing waits, so Grow, which adds under
// the same lock, either finds it counted and sure to look again, or invites another one. (Where the executor refuses
// tasks, the caller does what waits.) A task that comes when the loop is over finds nothing that waits: it never calls
// `body`, whose references may be gone.
struct GrowingLoop::State : std::enable_shared_from_this<State> {
    State(std::size_t pieceSize, std::function<void(std::size_t, std::size_t)> work)
        : grain(pieceSize)
        , body(std::move(work))
        , executor(GetCPUBoundExecutor())
        , workers(executor->GetConcurrency())
    {
    }

    void Grow(std::size_t more);
    void InviteWorkers(std::size_t wanted) noexcept;
    bool PostTurn() noexcept;
    void RunTurn() noexcept;
    bool RunPiece(std::size_t left) noexcept;
    std::exception_ptr CallBody(std::size_t begin, std::size_t end) noexcept;
    void DropRest();
    void Wait(const std::function<void()>& whileWaiting);

    const std::size_t grain;
    const std::function<void(std::size_t, std::size_t)> body;
    const std::shared_ptr<Executor> executor;
    const std::size_t workers;
    std::mutex mutex; // guards all below
    std::condition_variable ended;
    std::size_t count = 0;
    std::size_t next = 0;
    std::size_t running = 0; // pieces
    std::size_t invited = 0; // tasks that are queued or run
    bool dropsRest = false;
    std::exception_ptr thrown;
};

void GrowingLoop::State::Grow(std::size_t more)
{
    std::size_t wanted = 0;
    {
        const std::lock_guard lock(mutex);
        if (dropsRest) {
            return;
        }
        count += more;
        const std::size_t waiting = count - next;
        // A worker for each piece at most: more would come for nothing.
        wanted = std::min(workers, waiting / grain + (waiting % grain != 0 ? 1 : 0));
    }
    InviteWorkers(wanted);
}

// Never throws: a worker that was invited already may be in `body`, so the caller must not leave.
void GrowingLoop::State::InviteWorkers(std::size_t wanted) noexcept
{
    for (;;) {
        {
            const std::lock_guard lock(mutex);
            if (invited >= wanted) {
                return;
            }
            ++invited;
        }
        if (!PostTurn()) {
            const std::lock_guard lock(mutex);
            --invited;
            return; // the caller does the rest
        }
    }
}

bool GrowingLoop::State::PostTurn() noexcept
{
    try {
        return executor->Post([self = shared_from_this()] { self->RunTurn(); });
    } catch (const std::exception&) { // no memory
        return false;
    }
}

void GrowingLoop::State::RunTurn() noexcept
{
    RunPiece(0);
    {
        const std::lock_guard lock(mutex);
        if (next == count) {
            --invited;
            return;
        }
    }
    if (!PostTurn()) {
        const std::lock_guard lock(mutex);
        --invited;
    }
}

bool GrowingLoop::State::RunPiece(std::size_t left) noexcept
{
    std::unique_lock lock(mutex);
    if (count - next <= left) {
        return false;
    }
    const std::size_t begin = next;
    const std::size_t end = begin + std::min(grain, count - begin);
    next = end;
    ++running;
    lock.unlock();
    std::exception_ptr exception = CallBody(begin, end);
    lock.lock();
    --running;
    if (exception) { // no piece begins any more, and the first exception is the one that is told
        DropRest();
        thrown = thrown ? thrown : std::move(exception);
    }
    if (running == 0) {
        ended.notify_all();
    }
    return true;
}

std::exception_ptr GrowingLoop::State::CallBody(std::size_t begin, std::size_t end) noexcept
{
    try {
        body(begin, end);
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

void GrowingLoop::State::DropRest()
{
    dropsRest = true;
    // For a loop that has thrown or is destroyed the rest counts as taken.
    next = count;
}

void GrowingLoop::State::Wait(const std::function<void()>& whileWaiting)
{
    // How often a caller's function is asked that lets a user cancel: often enough for a person, seldom enough to cost
    // nothing.
    constexpr std::chrono::milliseconds kPause(50);
    const auto hasEnded = [this] { return running == 0; };
    std::unique_lock lock(mutex);
    // Without the lock: the caller's function may take its time, and the pieces need the lock to end.
    while (whileWaiting && !ended.wait_for(lock, kPause, hasEnded)) {
        lock.unlock();
        whileWaiting();
        lock.lock();
    }
    ended.wait(lock, hasEnded);
}

GrowingLoop::GrowingLoop(std::size_t grain, std::function<void(std::size_t, std::size_t)> body)
    : state_(std::make_shared<State>(grain, std::move(body)))
{
}

GrowingLoop::~GrowingLoop()
{
    {
        const std::lock_guard lock(state_->mutex);
        state_->DropRest();
    }
    state_->Wait({});
}

void GrowingLoop::Grow(std::size_t more)
{
    state_->Grow(more);
}

void GrowingLoop::Help(std::size_t left)
{
    state_->RunPiece(left);
}

void GrowingLoop::Finish(const std::function<void()>& whileWaiting)
{
    // The caller takes pieces like a worker. So the loop ends even where every worker is busy or is itself such a
    // caller: what has begun runs on some thread, and what has not is taken here.
    while (state_->RunPiece(0)) {
    }
    state_->Wait(whileWaiting);
    if (state_->thrown) {
        std::rethrow_exception(std::exchange(state_->thrown, nullptr));
    }
}

} // namespace orvcore
