#include <package/detail/FolderUse.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/shared/FileLock.h>
#include <orvcore/tasks/shared/NoDestructor.h>

#include <map>
#include <mutex>

namespace orvcapsule::detail {

namespace {

constexpr std::chrono::seconds kLockTimeout{5};

// The use of a folder is a lock on a file beside it, which may be there before the folder is, and one on the folder
// itself where the system has such: somebody who tidies up may remove the file, and the next process would make
// another.
struct UseLocks {
    std::unique_ptr<orvcore::FileLock> beside;
    std::unique_ptr<orvcore::FileLock> folder; // may be empty

    bool TryExclusive() const
    {
        return (!beside || beside->TryExclusive()) && (!folder || folder->TryExclusive());
    }
};

// How this process holds one folder.
struct Hold {
    std::mutex mutex;
    UseLocks locks; // empty: not at all
};

// The system releases the locks when the process has ended.
Hold& HoldOf(const std::filesystem::path& path)
{
    static orvcore::NoDestructor<std::mutex> mutex;
    static orvcore::NoDestructor<std::map<std::filesystem::path, Hold>> holds;
    const std::lock_guard guard(*mutex);
    return (*holds)[path];
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

// The folder may be another one than it was.
void HoldItself(const std::filesystem::path& folder, UseLocks& locks)
{
    locks.folder = orvcore::FileLock::Open(folder, false);
    if (locks.folder) {
        locks.folder->TryShared();
    }
}

} // namespace

void MakeFolderLock(const std::filesystem::path& folder)
{
    orvcore::FileLock::Open(LockPath(folder), true);
}

void MakeAndHoldFolder(const std::filesystem::path& folder)
{
    Hold& own = HoldOf(folder);
    const std::lock_guard guard(own.mutex);
    UseLocks& locks = own.locks;
    if (!locks.beside) {
        // Not while someone asks: to see the folder in use now would keep it from being cleaned.
        const auto asking = orvcore::FileLock::Open(AskingPath(folder), true);
        if (asking) {
            static_cast<void>(asking->WaitShared(kLockTimeout));
        }
        locks.beside = orvcore::FileLock::Open(LockPath(folder), true);
        if (locks.beside && !locks.beside->WaitShared(kLockTimeout)) {
            locks.beside.reset();
        }
    }
    orvcore::EnsureDirectory(folder);
    HoldItself(folder, locks);
}

bool WithFolderToOneself(const std::filesystem::path& folder, const std::function<void()>& action)
{
    Hold& own = HoldOf(folder);
    const std::lock_guard guard(own.mutex);
    const bool holds = own.locks.beside != nullptr;
    const bool isShared = holds || orvcore::Exists(LockPath(folder));
    const auto asking = isShared ? orvcore::FileLock::Open(AskingPath(folder), true) : nullptr;
    if (isShared && (!asking || !asking->TryExclusive())) {
        return false;
    }
    const UseLocks others =
        holds ? UseLocks()
              : UseLocks{orvcore::FileLock::Open(LockPath(folder), false), orvcore::FileLock::Open(folder, false)};
    const UseLocks& locks = holds ? own.locks : others;
    const bool alone = (locks.beside || !isShared) && locks.TryExclusive();
    if (alone) {
        action();
    }
    if (holds) {
        own.locks.beside->WaitShared(kLockTimeout);
        HoldItself(folder, own.locks);
    }
    return alone;
}

} // namespace orvcapsule::detail
