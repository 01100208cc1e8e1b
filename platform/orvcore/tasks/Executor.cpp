#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/tasks/shared/ThreadPoolExecutor.h>

#include <atomic>
#include <mutex>
#include <thread>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

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

#if !defined(_WIN32)
// On Windows the workers are gone before a library's static destructors run, perhaps with a lock in their hands:
// there nothing may be waited for, nor locked.
struct StopAtExit {
    // What is queued is left alone: destroying it could run code whose own statics are gone.
    explicit StopAtExit(Executors& stopped)
        : executors(stopped)
    {
    }
    StopAtExit(const StopAtExit&) = delete;
    StopAtExit& operator=(const StopAtExit&) = delete;
    ~StopAtExit()
    {
        executors.BeginTermination();
        executors.cpuBound->WaitUntilIdle(std::chrono::seconds(2));
    }
    Executors& executors;
};
#endif

Executors& TheExecutors()
{
    static NoDestructor<Executors> executors;
#if !defined(_WIN32)
    static const StopAtExit stopAtExit(*executors);
#endif
    static const bool pinned = (KeepModuleLoaded(&terminating), true);
    static_cast<void>(pinned);
    return *executors;
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
    executors.preTermination->Stop();
    executors.cpuBound->Stop();
}

bool IsTerminating() noexcept
{
    return terminating;
}

void KeepModuleLoaded(const void* addressInside) noexcept
{
#if defined(_WIN32)
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       static_cast<LPCWSTR>(addressInside), &module);
#else
    Dl_info info{};
    if (dladdr(addressInside, &info) != 0 && info.dli_fname != nullptr) {
        dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE); // the handle is kept on purpose
    }
#endif
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
