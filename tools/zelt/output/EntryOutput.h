#pragma once

#include <sources/CapsuleEntry.h>
#include <stock/StockCapsuleEntry.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

namespace zelt {

using Entries = std::vector<boost::shared_ptr<orvcapsule::CapsuleEntry>>;
using StockEntries = std::vector<boost::shared_ptr<orvcapsule::StockCapsuleEntry>>;

/// A table with one row for each template; empty without any.
std::string EntriesAsTable(const Entries& entries);
/// A summary of several lines with everything that a browser knows of one template.
std::string EntryAsText(const orvcapsule::CapsuleEntry& entry);
/// The same as one JSON object.
std::string EntryAsJSON(const orvcapsule::CapsuleEntry& entry);

/// A table with one row for each stock template; empty without any.
std::string StockEntriesAsTable(const StockEntries& entries);
/// What a search told of a stock template, as one JSON object.
/// @param index  its position among the `total` results of the search
std::string StockEntryAsJSON(const orvcapsule::StockCapsuleEntry& entry, std::size_t index, std::size_t total);

} // namespace zelt
