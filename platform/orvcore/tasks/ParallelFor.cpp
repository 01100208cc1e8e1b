#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/ParallelFor.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>

namespace orvcore {

namespace {

using Body = std::function<void(std::size_t, std::size_t)>;

// Shared with the workers; one that comes late finds no piece left and never touches `body`.
class Loop : public std::enable_shared_from_this<Loop> {
public:
    Loop(std::size_t count, std::size_t grain, const Body& body)
        : count_(count)
        , grain_(grain)
        , body_(body)
    {
    }

    // Never throws: a worker that was invited already may be in `body`, so the caller must not leave.
    void InviteWorkers(Executor& executor, std::size_t wanted) noexcept
    {
        try {
            for (std::size_t i = 0; i < wanted && executor.Post([self = shared_from_this()] { self->RunPieces(); });
                 ++i) {
            }
        } catch (const std::exception&) { // no memory: the caller does the rest alone
        }
    }

    void RunPieces()
    {
        std::unique_lock lock(mutex_);
        while (next_ < count_) {
            const std::size_t begin = next_;
            next_ += std::min(grain_, count_ - begin);
            const std::size_t end = next_;
            ++running_;
            lock.unlock();
            std::exception_ptr thrown = RunPiece(begin, end);
            lock.lock();
            if (thrown) { // no piece begins any more, and the first exception is the one that is told
                next_ = count_;
                if (!thrown_) {
                    thrown_ = std::move(thrown);
                }
            }
            --running_;
        }
        if (running_ == 0) {
            ended_.notify_all();
        }
    }

    void WaitAndRethrow(const std::function<void()>& whileWaiting)
    {
        constexpr std::chrono::milliseconds kPause(50);
        const auto hasEnded = [this] { return running_ == 0; };
        std::unique_lock lock(mutex_);
        while (whileWaiting && !ended_.wait_for(lock, kPause, hasEnded)) {
            lock.unlock();
            whileWaiting();
            lock.lock();
        }
        ended_.wait(lock, hasEnded);
        if (thrown_) {
            std::rethrow_exception(std::exchange(thrown_, nullptr));
        }
    }

private:
    std::exception_ptr RunPiece(std::size_t begin, std::size_t end)
    {
        try {
            body_(begin, end);
            return nullptr;
        } catch (...) {
            return std::current_exception();
        }
    }

    const std::size_t count_;
    const std::size_t grain_;
    const Body& body_;
    std::mutex mutex_;
    std::condition_variable ended_;
    std::size_t next_ = 0;
    std::size_t running_ = 0;
    std::exception_ptr thrown_;
};

} // namespace

void ParallelFor(std::size_t count, std::size_t grain, const Body& body, const std::function<void()>& whileWaiting)
{
    constexpr std::size_t kPiecesAWorker = 4;
    const std::shared_ptr<Executor> executor = GetCPUBoundExecutor();
    const std::size_t workers = executor->GetConcurrency();
    if (grain == 0) {
        grain = std::max<std::size_t>(count / (workers * kPiecesAWorker), 1);
    }
    if (count <= grain) {
        if (count != 0) {
            body(0, count);
        }
        return;
    }
    const std::size_t pieces = count / grain + (count % grain != 0 ? 1 : 0);
    const auto loop = std::make_shared<Loop>(count, grain, body);
    // The caller takes pieces like a worker. So the loop ends even where every worker is busy or is itself such a
    // caller: what has begun runs on some thread, and what has not is taken here.
    loop->InviteWorkers(*executor, std::min(pieces - 1, workers));
    loop->RunPieces();
    loop->WaitAndRethrow(whileWaiting);
}

} // namespace orvcore
