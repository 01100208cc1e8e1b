#pragma once

#include <orvcore/Export.h>
#include <orvcore/tasks/OneTimeInvocation.h>

#include <chrono>
#include <cstddef>
#include <functional>

namespace orvcore {

/// @file
/// The host's main thread: background work queues calls, the host runs them there. The host either pumps
/// (`RunMainThreadCalls` from its event loop) or installs a dispatcher that asks its event loop to do so.
/// Calls run in the order in which they were queued, one at a time, whichever way is used.

/// Queues `call` for the main thread and returns at once; from the main thread too, where it never runs inside this
/// call. False, with `call` destroyed unrun, after `StopMainThreadCalls`. Any thread.
ORVPLATFORM_API bool AsyncCallFromMainThread(OneTimeInvocation call);

/// Runs on the calling thread, which is the host's main thread by definition, the calls that were queued when it was
/// entered; what they queue in turn waits for the next time. Once `budget` is used up the rest waits too, so that a
/// burst does not hold up a frame; at least one call runs. A call that throws is reported as a task's exception is
/// (SetTaskExceptionHandler) and the next one runs. May be entered again from a call (a modal dialog pumps).
/// Returns the number of calls run.
ORVPLATFORM_API std::size_t RunMainThreadCalls(std::chrono::milliseconds budget = std::chrono::milliseconds::max());

/// Waits until a call is queued, at most for `timeout`; true when there is one. For a main thread without an event loop
/// of its own.
ORVPLATFORM_API bool WaitForMainThreadCalls(std::chrono::milliseconds timeout);

/// Hands `run` to the host's event loop, which calls it once on the main thread soon. Returns without waiting for the
/// main thread. What it throws is reported as a task's exception is; it is asked again with the next call that is
/// queued.
using MainThreadDispatcher = std::function<void(std::function<void()> run)>;

/// Installs what is told when there is something to run; empty (the default) for a host that pumps by itself. The
/// dispatcher is called on whichever thread queues, once for a burst, with no lock held; it must not run its argument
/// on the spot. Calls queued before the installation are dispatched at once.
/// Returns when no other thread is inside the dispatcher that was installed before: what that one used may go then.
/// (From inside a dispatcher it does not wait, so there nothing of the kind holds.) What was handed to the event loop
/// earlier may still run and does no harm.
ORVPLATFORM_API void SetMainThreadDispatcher(MainThreadDispatcher dispatcher);

/// For a host about to end its event loop: destroys queued calls on this thread without running them, and refuses
/// further calls, so that no objects held by calls stay alive. Returns when no other thread is inside the dispatcher,
/// which is not called again before `StartMainThreadCalls`; that accepts calls again.
ORVPLATFORM_API void StopMainThreadCalls();
ORVPLATFORM_API void StartMainThreadCalls();

} // namespace orvcore
