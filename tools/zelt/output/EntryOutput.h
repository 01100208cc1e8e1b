#pragma once

#include <sources/CapsuleEntry.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

namespace zelt {

using Entries = std::vector<boost::shared_ptr<orvcapsule::CapsuleEntry>>;

/// How templates are printed.
struct EntryForm {
    bool json = false;            ///< an object on a line for each
    bool isLong = false;          ///< a table with further columns, the path as the last
    bool hasDetails = false;      ///< everything that a browser knows, in several lines
    bool pathsAlone = false;      ///< the path as it is, on a line for each
    bool isNullSeparated = false; ///< behind each path a NUL, and no line feed
};

void PrintEntries(const Entries& entries, const EntryForm& form);

} // namespace zelt
