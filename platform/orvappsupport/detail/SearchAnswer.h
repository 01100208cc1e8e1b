#pragma once

#include <orvappsupport/StockSearch.h>

#include <string>
#include <string_view>

namespace orvappsupport::detail {

/// Reads a page into `results`, whose columns say what was asked for. An answer may be anything.
/// @return `None`, or `BadAnswer` with the reason in the results' message; rows and total are empty then
ORVPLATFORM_API search::Error ReadPage(std::string_view json, int count, search::Results& results);

/// What an answer without success says of itself, on one line; empty when it says nothing that can be shown.
ORVPLATFORM_API std::string ReadErrorMessage(std::string_view json);

} // namespace orvappsupport::detail
