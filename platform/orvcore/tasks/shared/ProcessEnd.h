#pragma once

namespace orvcore {

/// Why a service with a thread of its own has to end.
enum class ProcessEnd {
    Shutdown, ///< ShutdownExecutors: callers that wait for the service are told
    Exit,     ///< the process exits: what others left with the service may use static objects that are gone
};

/// Has `end` called once when the process's executors end, when they refuse work already and before their running tasks
/// are waited for: a task that waits for the service ends, too. At exit `end` is called before whatever was registered
/// for the exit earlier than this call, and not on Windows: there the system has ended the threads before. Any thread.
/// @return false when the executors have ended: `end` is not called, and the service must not begin.
[[nodiscard]] bool CallAtEnd(void (*end)(ProcessEnd) noexcept);

/// Has `function` called when the process exits, where its threads still live then. On Windows it is not called: the
/// system has ended the threads before, perhaps while they held a lock, so there nothing may be waited for or locked.
void CallAtExit(void (*function)()) noexcept;

} // namespace orvcore
