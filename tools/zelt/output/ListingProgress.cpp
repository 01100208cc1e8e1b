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
