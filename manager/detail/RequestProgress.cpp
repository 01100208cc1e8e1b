#include <manager/detail/RequestProgress.h>

#include <orvcore/host/Localiser.h>

namespace orvcapsule::detail {

// On the main thread, before the task is queued: the host's display shows a request that still waits its turn.
void OpenProgress(CheckCancel& token, double upper, std::string_view itemTitle)
{
    token.text1 = orvcore::Localiser::Resolve(kProgressCategoryTitle);
    token.text2 = orvcore::Localiser::Resolve(itemTitle);
    token.progressCategory = std::make_shared<orvappsupport::ProgressCategory>(token.text1);
    // A category for each request: the display shows as many lines as there are requests, and each ends with its own.
    token.progressItem = token.progressCategory->AddItem(token.text2, 0.0, upper);
}

ProgressEnd::ProgressEnd(const CheckCancel& token)
    : token_(token)
{
}

ProgressEnd::~ProgressEnd()
{
    if (token_.progressCategory) {
        // An abort may have taken it out before, on the main thread; a second removal does nothing.
        token_.progressCategory->RemoveItem(token_.progressItem);
    }
}

void MoveProgress(const CheckCancel& token, double position)
{
    if (token.progressItem) {
        token.progressItem->SetPosition(position);
    }
}

// An item may change after it has left its category, so that its line can say why it stopped.
void TellCanceled(const CheckCancel& token)
{
    if (token.progressItem) {
        token.progressItem->SetText(orvcore::Localiser::Resolve(kLoadingCanceled));
    }
}

} // namespace orvcapsule::detail
