#include <tools/http/Workers.h>

namespace orvtools::http {

Workers::Workers(std::size_t threads)
{
    for (std::size_t i = 0; i < threads; ++i) {
        threads_.emplace_back([this] { Run(); });
    }
}

Workers::~Workers()
{
    Stop();
}

void Workers::Post(std::function<void()> work)
{
    const std::lock_guard lock(mutex_);
    if (!ends_) {
        queue_.push_back(std::move(work));
        wake_.notify_one();
    }
}

void Workers::Stop()
{
    std::deque<std::function<void()>> dropped; // destroyed outside the lock
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
        dropped.swap(queue_);
    }
    wake_.notify_all();
    // A handler that runs is waited for, as Server::Stop promises; its answer then finds a closed socket.
    for (std::thread& thread : threads_) {
        thread.join();
    }
    threads_.clear();
}

void Workers::Run()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return ends_ || !queue_.empty(); });
        if (ends_) {
            return;
        }
        auto work = std::move(queue_.front());
        queue_.pop_front();
        lock.unlock();
        work();
        work = nullptr; // what it holds may end here, outside the lock
        lock.lock();
    }
}

} // namespace orvtools::http
