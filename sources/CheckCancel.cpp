#include <sources/CheckCancel.h>

namespace orvcapsule {

CheckCancel::CheckCancel() = default;

CheckCancel::~CheckCancel()
{
    RemoveProgressItem();
}

void CheckCancel::Abort()
{
    std::int32_t expected = 0;
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

void CheckCancel::RemoveProgressItem()
{
    if (progressCategory && progressCategory->HasItem(progressItem)) {
        progressCategory->RemoveItem(progressItem);
    }
}

} // namespace orvcapsule
