#include <sources/CheckCancel.h>

// Polled by the main thread, the executor's task and every worker of a listing at once, on any of which it may be the
// first to see the abort. docs/decisions/cancellation-token.md has the reason for two flags in place of one.

namespace orvcapsule {

CheckCancel::CheckCancel() = default;

CheckCancel::~CheckCancel()
{
    RemoveProgressItem();
}

void CheckCancel::Abort()
{
    std::int32_t expected = 0;
    // A second Abort leaves the flag alone: after the first one was consumed it must not look like a new request.
    abortRequested.compare_exchange_strong(expected, 1);
    RemoveProgressItem();
}

bool CheckCancel::GetAbort()
{
    if (aborted) {
        return true;
    }
    if (abortRequested == 1) {
        // The lasting answer is written before the request is consumed: a second poller that finds the request gone
        // finds the answer in its place.
        aborted = true;
        std::int32_t expected = 1;
        abortRequested.compare_exchange_strong(expected, 0);
        return true;
    }
    return aborted; // consumed by another poller since the first look
}

// Called by an abort and by the destructor, perhaps on two threads. The category takes an item out once; the second
// call finds none.
void CheckCancel::RemoveProgressItem()
{
    if (progressCategory && progressCategory->HasItem(progressItem)) {
        progressCategory->RemoveItem(progressItem);
    }
}

} // namespace orvcapsule
