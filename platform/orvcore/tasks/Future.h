#pragma once

#include <orvcore/ResultCode.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>

namespace orvcore {

/// Result code of a future that holds no value yet: "Future: Not Ready".
inline constexpr ResultCode kFutureNotReady = static_cast<ResultCode>(0xF3610002U);
/// Result code of a future whose work was cancelled or never done: "Future Is Cancelled".
inline constexpr ResultCode kFutureCancelled = static_cast<ResultCode>(0xF3610004U);

/// Where a future stands. It leaves `Pending` once and then never changes.
enum class FutureStatus { Pending, Ready, Failed, Cancelled };

/// Raised by `Future::Get` when there is no value; carries one of the two result codes above.
class FutureError : public std::runtime_error {
public:
    explicit FutureError(ResultCode code)
        : std::runtime_error(code == kFutureCancelled ? "Future Is Cancelled" : "Future: Not Ready")
        , code_(code)
    {
    }
    ResultCode GetCode() const noexcept
    {
        return code_;
    }

private:
    ResultCode code_;
};

namespace detail {

template <class T>
struct FutureState {
    std::mutex mutex;
    std::condition_variable settled;
    FutureStatus status = FutureStatus::Pending;
    std::optional<T> value;
    std::exception_ptr exception;

    // Settles the state unless it is settled already; `store` puts the outcome in place, under the lock.
    template <class Store>
    bool Settle(FutureStatus outcome, Store&& store)
    {
        const std::lock_guard lock(mutex);
        if (status != FutureStatus::Pending) {
            return false;
        }
        store();
        status = outcome;
        settled.notify_all();
        return true;
    }
};

} // namespace detail

/// The reader's end of a value that another thread makes; `Promise` is the other end. Copies share one value.
/// Thread-safe, and may outlive the promise. A default-built future counts as cancelled.
template <class T>
class Future {
public:
    Future() = default;

    FutureStatus GetStatus() const
    {
        return Wait(std::chrono::milliseconds(0));
    }

    /// Waits until the future is settled, at most for `timeout`, and returns where it then stands.
    FutureStatus Wait(std::chrono::milliseconds timeout) const
    {
        if (!state_) {
            return FutureStatus::Cancelled;
        }
        constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24 * 365); // clocks overflow far beyond it
        std::unique_lock lock(state_->mutex);
        state_->settled.wait_for(lock, std::min(timeout, kLongest),
                                 [this] { return state_->status != FutureStatus::Pending; });
        return state_->status;
    }

    /// A copy of the value. Never waits: raises FutureError when not ready or cancelled, and what the work threw when
    /// it failed.
    T Get() const
    {
        switch (GetStatus()) {
        case FutureStatus::Pending:
            throw FutureError(kFutureNotReady);
        case FutureStatus::Cancelled:
            throw FutureError(kFutureCancelled);
        case FutureStatus::Failed:
            std::rethrow_exception(state_->exception);
        case FutureStatus::Ready:
            break;
        }
        return *state_->value;
    }

    /// Cancels the future unless it is settled; true when this call did it. Work in progress learns of it through
    /// `Promise::IsCancelled`.
    bool Cancel() const
    {
        return state_ && state_->Settle(FutureStatus::Cancelled, [] {});
    }

private:
    template <class>
    friend class Promise;
    explicit Future(std::shared_ptr<detail::FutureState<T>> state)
        : state_(std::move(state))
    {
    }

    std::shared_ptr<detail::FutureState<T>> state_;
};

/// The maker's end of a future. Moved, not copied; destroyed unsettled (a task dropped from a queue, say) it cancels
/// the future, so that no thread waits for ever. One thread at a time uses it.
template <class T>
class Promise {
public:
    Promise()
        : state_(std::make_shared<detail::FutureState<T>>())
    {
    }
    Promise(Promise&&) noexcept = default;
    Promise& operator=(Promise&& other) noexcept
    {
        Promise old(std::move(*this));
        state_ = std::move(other.state_);
        return *this;
    }
    Promise(const Promise&) = delete;
    Promise& operator=(const Promise&) = delete;
    ~Promise()
    {
        Cancel();
    }

    Future<T> GetFuture() const
    {
        return Future<T>(state_);
    }

    /// @name Settling
    /// Each returns false, and changes nothing, when the future is settled already.
    /// @{
    bool SetValue(T value)
    {
        return state_ && state_->Settle(FutureStatus::Ready, [&] { state_->value.emplace(std::move(value)); });
    }
    bool SetException(const std::exception_ptr& exception)
    {
        return state_ && state_->Settle(FutureStatus::Failed, [&] { state_->exception = exception; });
    }
    bool Cancel()
    {
        return state_ && state_->Settle(FutureStatus::Cancelled, [] {});
    }
    /// @}

    /// True when the reader no longer wants the value: the work may stop.
    bool IsCancelled() const
    {
        return GetFuture().GetStatus() == FutureStatus::Cancelled;
    }

private:
    std::shared_ptr<detail::FutureState<T>> state_;
};

/// Waits for a future that carries a result code and returns that code, or `kFutureNotReady` / `kFutureCancelled`; what
/// failed work threw passes to the caller.
inline ResultCode WaitForResultCode(const Future<ResultCode>& future, std::chrono::milliseconds timeout)
{
    const FutureStatus status = future.Wait(timeout);
    if (status == FutureStatus::Pending) {
        return kFutureNotReady;
    }
    return status == FutureStatus::Cancelled ? kFutureCancelled : future.Get();
}

} // namespace orvcore
