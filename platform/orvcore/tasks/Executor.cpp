#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/tasks/shared/ProcessEnd.h>
#include <orvcore/tasks/shared/ThreadPoolExecutor.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace orvcore {

namespace {

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
    static const bool prepared = (KeepModuleLoaded(&terminating), CallAtExit(&StopAtExit), true);
    static_cast<void>(prepared);
    return *executors;
}

// What is queued is left alone: destroying it could run code whose own statics are gone.
void StopAtExit() noexcept
{
    TheExecutors().BeginTermination();
    EndServicesAtExit();
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
        if (handler && *handler) {
            (*handler)(exception);
        }
    } catch (...) { // nobody is left to tell
    }
}

} // namespace

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
