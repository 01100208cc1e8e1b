#pragma once

#include <sources/CapsuleEntry.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

namespace zelt {

using Entries = std::vector<boost::shared_ptr<orvcapsule::CapsuleEntry>>;

/// A table with one row for each template; empty without any.
std::string EntriesAsTable(const Entries& entries);
/// A summary of several lines with everything that a browser knows of one template.
std::string EntryAsText(const orvcapsule::CapsuleEntry& entry);
/// The same as one JSON object.
std::string EntryAsJSON(const orvcapsule::CapsuleEntry& entry);

} // namespace zelt
