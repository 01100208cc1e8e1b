#pragma once

#include <sources/CheckCancel.h>

#include <atomic>
#include <functional>

namespace test {

/// Aborts itself, or does something else, at the k-th poll.
class CountingToken : public orvcapsule::CheckCancel {
public:
    explicit CountingToken(int at, std::function<void()> action = {})
        : at_(at)
        , action_(std::move(action))
    {
    }
    bool GetAbort() override
    {
        if (++polls == at_) {
            action_ ? action_() : Abort();
        }
        return CheckCancel::GetAbort();
    }
    std::atomic<int> polls = 0;

private:
    const int at_;
    const std::function<void()> action_;
};

} // namespace test
