#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/shared/ProcessEnd.h>

#include <cstdlib>
#include <dlfcn.h>

namespace orvcore {

void KeepModuleLoaded(const void* addressInside) noexcept
{
    Dl_info info{};
    // RTLD_NOLOAD finds the module that is loaded already, RTLD_NODELETE marks it. In a program that is linked
    // statically there is nothing to find, and nothing that could be unloaded.
    if (dladdr(addressInside, &info) != 0 && info.dli_fname != nullptr) {
        dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE); // the handle is kept on purpose
    }
}

void CallAtExit(void (*function)()) noexcept
{
    // In a shared library this runs at exit or at the unloading, whichever comes first; KeepModuleLoaded leaves the
    // exit only.
    static_cast<void>(std::atexit(function)); // if it fails, exit does not wait for tasks that run
}

} // namespace orvcore
