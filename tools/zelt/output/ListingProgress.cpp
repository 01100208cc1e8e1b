#include <tools/zelt/output/ListingProgress.h>

#include <tools/zelt/output/Errors.h>

namespace zelt {

ListingProgress::ListingProgress(bool asLines)
    : asLines_(asLines)
{
    orvappsupport::SetProgressObserver([this](const orvappsupport::ProgressReport& report) { Show(report); });
}

ListingProgress::~ListingProgress()
{
    orvappsupport::SetProgressObserver(nullptr);
}

void ListingProgress::Show(const orvappsupport::ProgressReport& report)
{
    // The request's own item begins first, and its sources add lines of their own in the same category; the first one
    // tells the whole.
    item_ = item_ == 0 ? report.itemID : item_;
    if (report.itemID != item_) {
        return;
    }
    bar_.Set(report.GetFraction());
    const int percent = static_cast<int>(report.GetFraction() * 100);
    if (asLines_ && percent != percent_) {
        percent_ = percent;
        ReportError("listing", std::to_string(percent) + " %");
    }
}

} // namespace zelt
