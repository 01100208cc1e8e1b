#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace orvtools::http {

/// A few threads for work that may wait, as handlers do. The process's shared executors are for work that keeps
/// processors busy.
class Workers {
public:
    explicit Workers(std::size_t threads);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    ~Workers();

    void Post(std::function<void()> work);
    /// Drops what has not begun and waits for what has. May be called again.
    void Stop();

private:
    void Run();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> queue_;
    bool ends_ = false;
    std::vector<std::thread> threads_; // last: they use the others
};

} // namespace orvtools::http
