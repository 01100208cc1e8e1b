#pragma once

#include <tools/zelt/output/Progress.h>

#include <orvappsupport/Progress.h>

#include <cstdint>

namespace zelt {

/// Shows how far a request has come as the library's progress facility reports it: as a bar on a terminal, or as lines
/// "zelt: listing: 40 %" on standard error. One at a time.
class ListingProgress {
public:
    explicit ListingProgress(bool asLines);
    ListingProgress(const ListingProgress&) = delete;
    ListingProgress& operator=(const ListingProgress&) = delete;
    ~ListingProgress();

private:
    void Show(const orvappsupport::ProgressReport& report);

    const bool asLines_;
    Progress bar_{"listing"};
    std::uint64_t item_ = 0; // the request's own; its sources add others
    int percent_ = -1;       // as shown last
};

} // namespace zelt
