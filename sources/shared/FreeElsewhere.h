#pragma once

#include <orvcore/tasks/Executor.h>

#include <type_traits>
#include <utility>

namespace orvcapsule::detail {

/// Destroys `large` on a worker: to free many thousands of entries takes milliseconds, and neither the main thread nor
/// the next request should wait for that. When no worker accepts the task it is destroyed here.
template <class T>
void FreeElsewhere(T&& large) noexcept
{
    static_assert(!std::is_reference_v<T>, "it is moved from");
    try {
        static_cast<void>(orvcore::GetCPUBoundExecutor()->Post([held = std::forward<T>(large)] {}));
    } catch (...) { // no memory for a task
        return;
    }
}

} // namespace orvcapsule::detail
