#include <sources/PreviewLimit.h>

#include <atomic>

namespace orvcapsule {

namespace {

std::atomic<bool> thePreviewsAreExtracted = true;

} // namespace

void SetPreviewsInListings(bool extract) noexcept
{
    thePreviewsAreExtracted = extract;
}

bool GetPreviewsInListings() noexcept
{
    return thePreviewsAreExtracted;
}

} // namespace orvcapsule
