#pragma once

#include <orvappsupport/StockSearch.h>
#include <sources/CapsuleEntry.h>

#include <boost/shared_ptr.hpp>

#include <vector>

namespace orvcapsule::detail {

/// What a stock source asks the service for: one list for the process.
const std::vector<orvcore::UTF8String>& ResultColumns();

/// The rows of a page as entries, in order.
std::vector<boost::shared_ptr<CapsuleEntry>> MakeEntries(const orvappsupport::search::Results& results);

} // namespace orvcapsule::detail
