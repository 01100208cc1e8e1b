#pragma once

#include <orvappsupport/StockSearch.h>
#include <sources/CapsuleEntry.h>

#include <boost/shared_ptr.hpp>

#include <vector>

namespace orvcapsule::detail {

/// What a stock source asks the service for: one list for the process.
const std::vector<orvcore::UTF8String>& ResultColumns();

/// The rows of a page as entries, in order; they have the values of those columns.
std::vector<boost::shared_ptr<CapsuleEntry>> MakeEntries(const std::vector<orvappsupport::search::Row>& rows);

} // namespace orvcapsule::detail
