#include <sources/PreviewLimit.h>

#include <atomic>

namespace orvcapsule {

namespace {

// Each listing looks once, when it begins (LocalEntryMaker), so a listing is never half with previews.
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
