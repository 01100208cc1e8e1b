#pragma once

#include <orvcore/Export.h>
#include <orvcore/tasks/OneTimeInvocation.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>

namespace orvcore {

/// Runs work on other threads. All operations may be called from any thread, a worker's own included.
class ORVPLATFORM_API Executor {
public:
    Executor() = default;
    Executor(const Executor&) = delete;
    Executor& operator=(const Executor&) = delete;
    virtual ~Executor();

    /// Queues `task` and returns at once. False when the work is refused, which happens only once the executor has
    /// been stopped (or no thread could be started); the task is then destroyed without having run.
    /// A task that throws ends there: see SetTaskExceptionHandler.
    [[nodiscard]] virtual bool Post(OneTimeInvocation task) = 0;

    /// The largest number of tasks that run at one time; at least 1.
    virtual std::size_t GetConcurrency() const = 0;
};

/// The process-wide executor for work that computes: one worker for each core, started at the first post.
///
/// End of life. The workers are never joined by a static destructor of a library that is being unloaded:
/// - `ShutdownExecutors` ends them for good at a moment the host chooses;
/// - at exit of the process new work is refused, queued work is dropped, and where threads still live at that time
///   (not on Windows, where the system has ended them before) running tasks are given two seconds to end;
/// - the library that holds this code stays loaded once workers run, even when the host releases it.
ORVPLATFORM_API std::shared_ptr<Executor> GetCPUBoundExecutor();

/// Runs work whose end is not waited for, one task at a time, until the process ends. At exit queued tasks are dropped
/// and a running one is abandoned: exit is never delayed. Such a task must therefore be safe to interrupt at any point,
/// and a long one polls `IsTerminating`.
ORVPLATFORM_API std::shared_ptr<Executor> GetPreTerminationExecutor();

/// Ends the process-wide executors: work is refused from now on, queued work is dropped, and the call returns when
/// the tasks that were running have ended. For a host that unloads the library, or wants a quiet exit. Must not be
/// called from a task, nor under the system's loader lock. Later calls do nothing.
ORVPLATFORM_API void ShutdownExecutors();

/// True from the moment the process-wide executors end.
ORVPLATFORM_API bool IsTerminating() noexcept;

/// Keeps the module that contains `addressInside` (a function or a static object) loaded until the process ends.
/// A library whose code runs as tasks calls it once before its first post. Failure is silent.
ORVPLATFORM_API void KeepModuleLoaded(const void* addressInside) noexcept;

/// Receives what a task threw, on the thread that ran it.
using TaskExceptionHandler = std::function<void(const std::exception_ptr&)>;

/// Installs the handler told of exceptions that leave a task; an empty one (the default) drops them silently.
/// The executor goes on either way. What the handler itself throws is dropped.
ORVPLATFORM_API void SetTaskExceptionHandler(TaskExceptionHandler handler);

/// Runs `task` as an executor does: whatever leaves it goes to the installed handler.
ORVPLATFORM_API void RunTask(OneTimeInvocation& task) noexcept;

} // namespace orvcore
