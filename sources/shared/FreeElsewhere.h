#pragma once

#include <orvcore/tasks/Executor.h>

#include <type_traits>
#include <utility>

namespace orvcapsule::detail {

/// Has a worker destroy `large`: many thousands of entries take milliseconds, for which neither the main thread nor the
/// next request should wait. Where no worker is to be had it is destroyed here.
template <class T>
void FreeElsewhere(T&& large) noexcept
{
    static_assert(!std::is_reference_v<T>, "it is moved from");
    try {
        static_cast<void>(orvcore::GetCPUBoundExecutor()->Post([held = std::move(large)] {}));
    } catch (...) { // no memory for a task
        return;
    }
}

} // namespace orvcapsule::detail
