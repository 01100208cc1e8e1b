#pragma once

#include <sources/CapsuleEntry.h>
#include <sources/CheckCancel.h>

#include <boost/shared_ptr.hpp>

#include <vector>

namespace orvcapsule::detail {

/// Adds the entries' texts, the display name and each tag, to the search index; ends early when the token is aborted.
void IndexEntries(const std::vector<boost::shared_ptr<CapsuleEntry>>& entries, CheckCancel& token);

} // namespace orvcapsule::detail
