#pragma once

#include <manager/detail/ManagerState.h>

#include <vector>

namespace orvcapsule::detail {

/// Queues a stock search under `token`: page after page, the callback gets the entries of each. Without terms it lists
/// the gallery. It ends with the last result, with a page that is empty, at the thousandth result, or with an error,
/// which the failure callback is told of. A manager whose only source is not a stock source finds nothing.
void PostStockSearch(ManagerState& state, const std::vector<orvcore::UTF16String>& terms, const TokenPtr& token);

} // namespace orvcapsule::detail
