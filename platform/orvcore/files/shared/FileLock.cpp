#include <orvcore/files/shared/FileLock.h>

#include <thread>

namespace orvcore {

std::error_code FileLock::Wait(std::chrono::milliseconds timeout, const std::function<std::error_code()>& attempt)
{
    const auto end = std::chrono::steady_clock::now() + timeout;
    std::error_code error = attempt();
    while (error == std::errc::device_or_resource_busy && std::chrono::steady_clock::now() < end) {
        // No call of either system waits for a lock for a set time. A holder keeps it for a rename, or to its process's
        // end: 5 ms are little for the first and nothing for the second.
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        error = attempt();
    }
    return error;
}

bool FileLock::TryExclusive()
{
    return !Try(true);
}

bool FileLock::TryShared()
{
    return !Try(false);
}

bool FileLock::WaitShared(std::chrono::milliseconds timeout)
{
    return !Wait(timeout, [this] { return Try(false); });
}

} // namespace orvcore
