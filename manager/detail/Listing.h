#pragma once

#include <manager/detail/ManagerState.h>

#include <vector>

namespace orvcapsule::detail {

/// Queues a full listing under `token`: it empties the search index and fills it again. The partial-completion callback
/// gets each source's entries when they are listed; the local-request callback gets all of them, sorted, at the end.
/// With `showProgress` the host's progress display shows it, and each source is handed its `folders`.
void PostListing(ManagerState& state, const std::vector<GraphicSourceState>& folders, bool showProgress,
                 const TokenPtr& token);

} // namespace orvcapsule::detail
