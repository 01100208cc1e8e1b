#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace orvcore {

/// A piece of work that runs at most once: any callable without arguments, movable but not necessarily copyable.
/// What it holds is released right after the run, or with the object when it never ran. Moved, never copied.
/// Not thread-safe: it travels from the thread that made it to the one that runs it.
class OneTimeInvocation {
public:
    OneTimeInvocation() noexcept = default;

    /// Takes the callable over; implicit, so that a lambda can be posted as it is.
    template <class F, class = std::enable_if_t<!std::is_same_v<std::remove_cvref_t<F>, OneTimeInvocation> &&
                                                std::is_invocable_v<std::decay_t<F>&>>>
    OneTimeInvocation(F&& call)
        : call_(std::make_unique<Bound<std::decay_t<F>>>(std::forward<F>(call)))
    {
    }

    /// Runs the callable and releases it; does nothing when it is empty or has run. What the callable throws passes.
    void operator()()
    {
        if (const std::unique_ptr<Call> call = std::move(call_)) {
            call->Run();
        }
    }

    /// True while there is something left to run.
    explicit operator bool() const noexcept
    {
        return call_ != nullptr;
    }

private:
    struct Call {
        Call() = default;
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        virtual ~Call() = default;
        virtual void Run() = 0;
    };

    template <class F>
    struct Bound final : Call {
        explicit Bound(const F& f)
            : function(f)
        {
        }
        explicit Bound(F&& f)
            : function(std::move(f))
        {
        }
        void Run() override
        {
            function();
        }
        F function;
    };

    std::unique_ptr<Call> call_;
};

} // namespace orvcore
