#pragma once

namespace zelt {

/// Catches the user's interruption (Ctrl-C) while it lives, so that work can be cancelled in good order. A second one
/// ends the program at once, as does any that comes while none of these lives. One at a time.
class InterruptWatch {
public:
    enum class Of {
        Interrupt,
        InterruptAndTermination, ///< also the polite end (SIGTERM), which is how scripts end a service
    };

    explicit InterruptWatch(Of signals = Of::Interrupt);
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;
    ~InterruptWatch();

    /// True once the user has interrupted.
    bool IsRaised() const noexcept;
    /// @throws Cancelled  once the user has interrupted
    void Check() const;

private:
    void (*before_)(int);
    void (*beforeTermination_)(int);
};

} // namespace zelt
