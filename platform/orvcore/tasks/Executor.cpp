#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/detail/ThreadPoolExecutor.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/tasks/shared/ProcessEnd.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

// The process-wide executors and the order in which they end, at the host's call or at exit:
//
// - both refuse work, then `terminating` is set (the other way round a queued task would start in the place of one that
//   has noticed the end);
// - services with threads of their own end, because a running task may be waiting for one;
// - running tasks are waited for: without limit at the host's call, two seconds at exit.
//
// Nothing here is ever destroyed (NoDestructor), and the module stays loaded: workers may run until the process is
// gone. docs/decisions/executor-shutdown.md has the reasons.

namespace orvcore {

namespace {

// Has no destructor that runs at exit, so it may be asked until the last moment.
std::atomic<bool> terminating = false;

struct HandlerSlot {
    std::mutex mutex;
    std::shared_ptr<const TaskExceptionHandler> handler;
};

HandlerSlot& TheHandler()
{
    static NoDestructor<HandlerSlot> slot;
    return *slot;
}

struct EndCalls {
    std::mutex mutex;
    std::vector<void (*)(ProcessEnd) noexcept> calls;
};

EndCalls& TheEndCalls()
{
    static NoDestructor<EndCalls> calls;
    return *calls;
}

// The calls are taken out of the list, so each is made once, however often the end comes: at the host's call, and once
// for each registration at exit. They are made without the lock: a service may take its time, or ask for this list.
void EndServices(ProcessEnd reason) noexcept
{
    std::vector<void (*)(ProcessEnd) noexcept> calls;
    {
        const std::lock_guard lock(TheEndCalls().mutex);
        calls.swap(TheEndCalls().calls);
    }
    for (const auto end : calls) {
        end(reason);
    }
}

void EndServicesAtExit() noexcept
{
    EndServices(ProcessEnd::Exit);
}

struct Executors {
    std::shared_ptr<ThreadPoolExecutor> cpuBound =
        std::make_shared<ThreadPoolExecutor>(std::thread::hardware_concurrency());
    std::shared_ptr<ThreadPoolExecutor> preTermination = std::make_shared<ThreadPoolExecutor>(1);

    // Both refuse work before any task learns of the end, or the next one in the queue would start in its place.
    void BeginTermination()
    {
        preTermination->Refuse();
        cpuBound->Refuse();
        terminating = true;
    }
};

void StopAtExit() noexcept;

Executors& TheExecutors()
{
    static NoDestructor<Executors> executors;
    // With the first use, not when the library is loaded: a host that starts no task may unload it again. First the
    // module is kept, then the exit handler registered, since one whose code has been unloaded would crash the exit.
    static const bool prepared = (KeepModuleLoaded(&terminating), CallAtExit(&StopAtExit), true);
    static_cast<void>(prepared);
    return *executors;
}

// What is queued is left alone: destroying it could run code whose own statics are gone.
void StopAtExit() noexcept
{
    TheExecutors().BeginTermination();
    EndServicesAtExit();
    // A host's exit must not hang on a slow disk or network; what runs longer is cut off, as a killed process would be.
    TheExecutors().cpuBound->WaitUntilIdle(std::chrono::seconds(2));
}

void Report(const std::exception_ptr& exception) noexcept
{
    try {
        std::shared_ptr<const TaskExceptionHandler> handler;
        {
            const std::lock_guard lock(TheHandler().mutex);
            handler = TheHandler().handler;
        }
        // Called outside the lock: a handler may set another one.
        if (handler && *handler) {
            (*handler)(exception);
        }
    } catch (...) { // the handler itself failed, and there is no other
    }
}

} // namespace

// Here, so that the class has its table of functions in this library alone.
Executor::~Executor() = default;

std::shared_ptr<Executor> GetCPUBoundExecutor()
{
    return TheExecutors().cpuBound;
}

std::shared_ptr<Executor> GetPreTerminationExecutor()
{
    return TheExecutors().preTermination;
}

void ShutdownExecutors()
{
    Executors& executors = TheExecutors();
    executors.BeginTermination();
    EndServices(ProcessEnd::Shutdown);
    executors.preTermination->Stop();
    executors.cpuBound->Stop();
}

bool CallAtEnd(void (*end)(ProcessEnd) noexcept)
{
    // Under the lock: either EndServices finds the call, or this finds that it is too late.
    const std::lock_guard lock(TheEndCalls().mutex);
    if (terminating) {
        return false;
    }
    TheEndCalls().calls.push_back(end);
    CallAtExit(&EndServicesAtExit); // its turn comes in the order of these calls, not in that of the executors
    return true;
}

bool IsTerminating() noexcept
{
    return terminating;
}

void SetTaskExceptionHandler(TaskExceptionHandler handler)
{
    // Declared before the lock: the old handler, which it holds after the swap, goes when the lock is released already.
    auto shared = std::make_shared<const TaskExceptionHandler>(std::move(handler));
    const std::lock_guard lock(TheHandler().mutex);
    TheHandler().handler.swap(shared);
}

void RunTask(OneTimeInvocation& task) noexcept
{
    try {
        task();
    } catch (...) {
        Report(std::current_exception());
    }
}

} // namespace orvcore
