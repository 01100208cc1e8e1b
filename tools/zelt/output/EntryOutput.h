#pragma once

#include <sources/CapsuleEntry.h>
#include <stock/StockCapsuleEntry.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

namespace zelt {

using Entries = std::vector<boost::shared_ptr<orvcapsule::CapsuleEntry>>;
using StockEntries = std::vector<boost::shared_ptr<orvcapsule::StockCapsuleEntry>>;

/// How templates are printed.
struct EntryForm {
    bool json = false;            ///< an object on a line for each
    bool isLong = false;          ///< a table with further columns, the path as the last
    bool hasDetails = false;      ///< everything that a browser knows, in several lines
    bool pathsAlone = false;      ///< the path as it is, on a line for each
    bool isNullSeparated = false; ///< behind each path a NUL, and no line feed
};

/// Whether the entry's package needs a password to be read.
bool IsEncrypted(const orvcapsule::CapsuleEntry& entry);

void PrintEntries(const Entries& entries, const EntryForm& form);

/// A table with one row for each stock template; empty without any.
std::string StockEntriesAsTable(const StockEntries& entries);
/// What a search told of a stock template, as one JSON object.
/// @param index  its position among the `total` results of the search
std::string StockEntryAsJSON(const orvcapsule::StockCapsuleEntry& entry, std::size_t index, std::size_t total);

} // namespace zelt
