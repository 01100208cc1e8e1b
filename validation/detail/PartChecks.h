#pragma once

#include <orvstorage/ZipEntry.h>
#include <validation/detail/FindingList.h>

#include <cstdint>
#include <string>
#include <vector>

namespace orvcapsule::detail {

/// One entry of a package, or one file of the folder that is to be one.
struct Part {
    orvcore::UTF8String name; ///< forward slashes
    std::uint64_t size = 0;
    std::string head; ///< of a picture or film its first orvstorage::kEntryHeadSize bytes; empty when they are damaged
};

/// The parts beside the definition: a poster and a project, pictures and films by their content, names that nobody asks
/// for.
void CheckParts(const std::vector<Part>& parts, FindingList& findings);

} // namespace orvcapsule::detail
