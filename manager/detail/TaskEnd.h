#pragma once

#include <sources/CheckCancel.h>

#include <orvcore/tasks/Executor.h>

#include <exception>

namespace orvcapsule::detail {

/// True when a task has to end: its request was cancelled, or the process's executors end. What it has by then is not
/// whole and is not delivered.
inline bool MustEnd(CheckCancel& token)
{
    return token.GetAbort() || orvcore::IsTerminating();
}

/// Tells the host (`orvcore::SetTaskExceptionHandler`) of the exception that is being handled, where the task goes on.
/// The handler is called on this thread, and what it throws is dropped.
inline void ReportCurrentException()
{
    orvcore::OneTimeInvocation rethrow([exception = std::current_exception()] { std::rethrow_exception(exception); });
    orvcore::RunTask(rethrow);
}

} // namespace orvcapsule::detail
