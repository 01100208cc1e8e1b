#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/shared/ProcessEnd.h>

#include <cstdlib>
#include <dlfcn.h>

namespace orvcore {

void KeepModuleLoaded(const void* addressInside) noexcept
{
    Dl_info info{};
    if (dladdr(addressInside, &info) != 0 && info.dli_fname != nullptr) {
        dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE); // the handle is kept on purpose
    }
}

void CallAtExit(void (*function)()) noexcept
{
    static_cast<void>(std::atexit(function)); // if it fails, exit does not wait for tasks that run
}

} // namespace orvcore
