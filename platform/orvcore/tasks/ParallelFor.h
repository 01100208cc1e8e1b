#pragma once

#include <orvcore/Export.h>

#include <cstddef>
#include <functional>

namespace orvcore {

/// Calls `body(begin, end)` for pieces that together cover [0, count) once each, on all workers of the CPU-bound
/// executor and on the calling thread, and returns when all have ended. `grain` is the largest number of elements a
/// piece; 0 chooses one that gives every worker a few pieces. The pieces run in no set order and at the same time; with
/// a single piece, or no worker to be had, everything runs on the caller.
///
/// May be called from anywhere, a worker included: the caller does what no other thread has taken up, so it never waits
/// for work that has not begun. When `body` throws, pieces not begun are left out and the first exception leaves this
/// call once the running ones have ended.
ORVPLATFORM_API void ParallelFor(std::size_t count, std::size_t grain,
                                 const std::function<void(std::size_t begin, std::size_t end)>& body);

} // namespace orvcore
