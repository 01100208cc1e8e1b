#include <tools/zelt/support/Interrupt.h>

#include <tools/zelt/output/Errors.h>

#include <atomic>
#include <csignal>

namespace zelt {

namespace {

// Atomic rather than sig_atomic_t: on Windows the handler runs on a thread of its own.
std::atomic<bool> raised = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may touch nothing else");

} // namespace

extern "C" {
static void OnInterrupt(int /*signal*/)
{
    raised = true;
    // The second Ctrl-C ends the program at once: cancelling in good order may take long, and the user must have a way
    // out.
    std::signal(SIGINT, SIG_DFL);
}

// Programs that end others, such as timeout, may ask twice in one breath.
static void OnTermination(int /*signal*/)
{
    raised = true;
    std::signal(SIGTERM, &OnTermination);
}
}

InterruptWatch::InterruptWatch(Of signals)
    : beforeTermination_(signals == Of::Interrupt ? SIG_ERR : std::signal(SIGTERM, &OnTermination))
{
    raised = false;
    before_ = std::signal(SIGINT, &OnInterrupt);
    if (before_ == SIG_IGN) { // whoever started the program wants it left alone
        std::signal(SIGINT, SIG_IGN);
    }
}

InterruptWatch::~InterruptWatch()
{
    std::signal(SIGINT, before_ == SIG_ERR ? SIG_DFL : before_);
    if (beforeTermination_ != SIG_ERR) {
        std::signal(SIGTERM, beforeTermination_);
    }
}

bool InterruptWatch::IsRaised() const noexcept
{
    return raised;
}

void InterruptWatch::Check() const
{
    if (IsRaised()) {
        throw Cancelled();
    }
}

} // namespace zelt
