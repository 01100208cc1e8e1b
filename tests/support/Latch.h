#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace orvtest {

/// A single-use counter that threads wait for, as std::latch: that one loses wake-ups in the C++ library of the
/// Windows cross-build, where waiting on an atomic is not the system's own.
class Latch {
public:
    explicit Latch(std::ptrdiff_t expected)
        : left_(expected)
    {
    }

    void count_down(std::ptrdiff_t by = 1)
    {
        const std::lock_guard lock(mutex_);
        left_ -= by;
        if (left_ <= 0) {
            reached_.notify_all();
        }
    }
    void wait()
    {
        std::unique_lock lock(mutex_);
        reached_.wait(lock, [this] { return left_ <= 0; });
    }
    bool try_wait()
    {
        const std::lock_guard lock(mutex_);
        return left_ <= 0;
    }
    void arrive_and_wait()
    {
        count_down();
        wait();
    }

private:
    std::mutex mutex_;
    std::condition_variable reached_;
    std::ptrdiff_t left_;
};

} // namespace orvtest
