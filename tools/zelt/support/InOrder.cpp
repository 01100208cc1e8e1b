#include <tools/zelt/support/InOrder.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace zelt {

namespace {

// The workers take the numbers from `next_` on; what is done waits until everything before it is taken.
// Workers are threads of their own and not the library's, because the user says how many there are (--jobs). They run
// at most 64 numbers for each of them ahead of what was taken: one slow file at the front would otherwise have the
// results of all others held in memory.
class Crew {
public:
    Crew(std::size_t count, std::size_t jobs, const std::function<void(std::size_t)>& work)
        : work_(work)
        , ahead_(jobs * 64)
        , done_(count)
    {
        for (std::size_t i = 0; i < jobs; ++i) {
            workers_.emplace_back([this] { Run(); });
        }
    }
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;
    ~Crew()
    {
        {
            const std::lock_guard lock(mutex_);
            // Also when `take` has thrown: work that has not begun is left out, and what has begun still uses the
            // caller's objects.
            next_ = done_.size();
        }
        mayBegin_.notify_all();
        for (std::thread& worker : workers_) {
            worker.join();
        }
    }

    void Await(std::size_t number)
    {
        std::unique_lock lock(mutex_);
        awaited_ = number;
        isDone_.wait(lock, [&] { return done_[number]; });
    }
    void NoteTaken(std::size_t number)
    {
        const std::lock_guard lock(mutex_);
        taken_ = number + 1;
        if (idle_ != 0) {
            mayBegin_.notify_one();
        }
    }

private:
    void Run()
    {
        std::unique_lock lock(mutex_);
        while (true) {
            ++idle_;
            mayBegin_.wait(lock, [this] { return next_ == done_.size() || next_ < taken_ + ahead_; });
            --idle_;
            if (next_ == done_.size()) {
                return;
            }
            const std::size_t number = next_++;
            lock.unlock();
            work_(number);
            lock.lock();
            done_[number] = true;
            // Only this one wakes the taker, which waits for no other.
            if (number == awaited_) {
                isDone_.notify_one();
            }
        }
    }

    const std::function<void(std::size_t)>& work_;
    const std::size_t ahead_;
    std::mutex mutex_;
    std::condition_variable mayBegin_;
    std::condition_variable isDone_;
    std::vector<bool> done_;
    std::size_t next_ = 0;
    std::size_t taken_ = 0;
    std::size_t awaited_ = 0;          // by the thread that takes
    std::size_t idle_ = 0;             // workers that wait because too much waits to be taken
    std::vector<std::thread> workers_; // last: they use the others
};

} // namespace

void DoInOrder(std::size_t count, std::size_t jobs, const std::function<void(std::size_t)>& work,
               const std::function<void(std::size_t)>& take)
{
    const std::size_t processors = std::max(std::thread::hardware_concurrency(), 1U);
    // A number from the command line may be anything.
    jobs = std::min({jobs == 0 ? processors : jobs, count, processors * 16});
    if (jobs <= 1) {
        for (std::size_t i = 0; i < count; ++i) {
            work(i);
            take(i);
        }
        return;
    }
    Crew crew(count, jobs, work);
    for (std::size_t i = 0; i < count; ++i) {
        crew.Await(i);
        take(i);
        crew.NoteTaken(i);
    }
}

} // namespace zelt
