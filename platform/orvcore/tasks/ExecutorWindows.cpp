#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/shared/ProcessEnd.h>

#include <windows.h>

namespace orvcore {

void KeepModuleLoaded(const void* addressInside) noexcept
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       static_cast<LPCWSTR>(addressInside), &module);
}

// Handlers of a library run here when the system has ended all other threads, perhaps inside a lock: see ProcessEnd.h.
void CallAtExit(void (*)()) noexcept {}

} // namespace orvcore
