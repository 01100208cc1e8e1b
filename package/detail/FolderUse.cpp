#include <package/detail/FolderUse.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/shared/FileLock.h>

#include <map>
#include <mutex>

namespace orvcapsule::detail {

namespace {

constexpr std::chrono::seconds kPatience{5};

// The folders that this process holds. Never destroyed: the system releases the locks when the process has ended.
struct HeldFolders {
    std::mutex mutex;
    std::map<std::filesystem::path, std::unique_ptr<orvcore::FileLock>> locks;
};

HeldFolders& TheHeldFolders()
{
    static HeldFolders& held = *new HeldFolders;
    return held;
}

std::filesystem::path LockPath(std::filesystem::path folder)
{
    return folder += ".lock";
}

// Who asks for the folder to itself must give up its own hold for a moment, and so must not meet another who asks.
std::filesystem::path AskingPath(std::filesystem::path folder)
{
    return folder += ".ask.lock";
}

} // namespace

void MakeFolderLock(const std::filesystem::path& folder)
{
    orvcore::FileLock::Open(LockPath(folder), true);
}

void HoldFolder(const std::filesystem::path& folder)
{
    HeldFolders& held = TheHeldFolders();
    const std::lock_guard guard(held.mutex);
    auto& lock = held.locks[folder];
    if (!lock) {
        // Not while someone asks: to see the folder in use now would keep it from being cleaned.
        const auto asking = orvcore::FileLock::Open(AskingPath(folder), true);
        if (asking) {
            static_cast<void>(asking->WaitShared(kPatience));
        }
        lock = orvcore::FileLock::Open(LockPath(folder), true);
        if (lock && !lock->WaitShared(kPatience)) {
            lock.reset();
        }
    }
}

bool WithFolderToOneself(const std::filesystem::path& folder, const std::function<void()>& action)
{
    HeldFolders& held = TheHeldFolders();
    const std::lock_guard guard(held.mutex);
    const auto own = held.locks.find(folder);
    const bool holds = own != held.locks.end() && own->second;
    if (!holds && !orvcore::Exists(LockPath(folder))) {
        action();
        return true;
    }
    const auto asking = orvcore::FileLock::Open(AskingPath(folder), true);
    if (!asking || !asking->TryExclusive()) {
        return false;
    }
    const auto other = holds ? nullptr : orvcore::FileLock::Open(LockPath(folder), false);
    orvcore::FileLock* const lock = holds ? own->second.get() : other.get();
    const bool alone = lock != nullptr && lock->TryExclusive();
    if (alone) {
        action();
    }
    if (holds) {
        lock->WaitShared(kPatience);
    }
    return alone;
}

} // namespace orvcapsule::detail
