#include <package/detail/FolderUse.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/shared/FileLock.h>
#include <orvcore/tasks/shared/NoDestructor.h>

#include <map>
#include <mutex>

namespace orvcapsule::detail {

// The protocol. Two locks show that a process uses a folder, both held shared: one on "<folder>.lock", one on the
// folder itself. Whoever wants to delete the folder takes both exclusively, which fails while anybody else holds one of
// them.
//
// A lock that is held shared must be given up for a moment to be taken exclusively; no system changes it in one step.
// In that moment another process that asks too would find the lock free. So asking needs "<folder>.ask.lock"
// exclusively first, and whoever does not get that at once leaves the folder alone. A start waits for the asking lock
// (shared) before it takes the use locks, so that its short shared lock does not make the other's attempt fail.
//
// The order is always: this process's mutex, the asking lock, the lock beside, the lock on the folder. Every wait for a
// lock has a limit, and a lock that cannot be had is left out: a folder whose file system has no locks is still used,
// only not guarded. The lock files are never deleted: a process that had opened one that is gone would lock a file that
// nobody else can see.

namespace {

// A deletion holds the locks exclusively while it runs. InitTempDirectory is called on the host's main thread, so a
// start does not wait for ever for a large folder on a slow disk; it then uses the folder without that lock.
constexpr std::chrono::seconds kLockTimeout{5};

// A process that uses a folder locks a file beside it, which can exist before the folder does, and the folder itself
// where the system allows that. One lock alone is not enough: a tool that cleans the temporary folder may delete the
// file, and the next process would create and lock a new one.
struct UseLocks {
    std::unique_ptr<orvcore::FileLock> beside;
    std::unique_ptr<orvcore::FileLock> folder; // may be empty

    bool TryExclusive() const
    {
        return (!beside || beside->TryExclusive()) && (!folder || folder->TryExclusive());
    }
};

// How this process holds one folder.
// The mutex is held during the action, a deletion for instance: threads of one process take their turn by it, because
// two lock objects of one process exclude each other and would take each other for a foreign program.
struct Hold {
    std::mutex mutex;
    UseLocks locks; // empty: not at all
};

// The system releases the locks when the process has ended.
Hold& HoldOf(const std::filesystem::path& path)
{
    // Never destroyed, because the background task may be at work while the process exits.
    static orvcore::NoDestructor<std::mutex> mutex;
    static orvcore::NoDestructor<std::map<std::filesystem::path, Hold>> holds;
    const std::lock_guard guard(*mutex);
    return (*holds)[path];
}

std::filesystem::path LockPath(std::filesystem::path folder)
{
    return folder += ".lock";
}

// The lock file of those who want the folder exclusively. Such a process must release its shared lock for a moment;
// this lock keeps two of them from doing so at the same time, when each would take the folder for unused.
std::filesystem::path AskingPath(std::filesystem::path folder)
{
    return folder += ".ask.lock";
}

// Null when it cannot be opened, whatever the reason: see above, the folder is used even so. Only a deletion takes a
// lock that is there and cannot be opened for one that another process holds.
std::unique_ptr<orvcore::FileLock> OpenLock(const std::filesystem::path& path, bool create)
{
    std::error_code ignored;
    return orvcore::FileLock::Open(path, create, ignored);
}

// Opens the folder's own lock again: the folder may have been deleted and created since.
void HoldItself(const std::filesystem::path& folder, UseLocks& locks)
{
    locks.folder = OpenLock(folder, false);
    if (locks.folder) {
        locks.folder->TryShared();
    }
}

} // namespace

void MakeFolderLock(const std::filesystem::path& folder)
{
    OpenLock(LockPath(folder), true);
}

void MakeAndHoldFolder(const std::filesystem::path& folder)
{
    Hold& own = HoldOf(folder);
    const std::lock_guard guard(own.mutex);
    UseLocks& locks = own.locks;
    if (!locks.beside) {
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + kLockTimeout; // of both waits together
        const auto left = [end] { return std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()); };
        // Waits while another process asks for the folder exclusively: that process would take a shared lock for a
        // sign of use, and the folder would not be cleaned.
        const auto asking = OpenLock(AskingPath(folder), true);
        if (asking) {
            static_cast<void>(asking->WaitShared(left()));
        }
        locks.beside = OpenLock(LockPath(folder), true);
        if (locks.beside && !locks.beside->WaitShared(left())) {
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
    // `beside` tells whether this process uses the folder: it is the lock that can exist before the folder does.
    // Without a lock file no process has initialised the folder, and none is kept out.
    const bool isShared = holds || orvcore::Exists(LockPath(folder));
    const auto asking = isShared ? OpenLock(AskingPath(folder), true) : nullptr;
    if (isShared && (!asking || !asking->TryExclusive())) {
        return false;
    }
    // A process that has not initialised the folder opens its locks for this call only.
    const UseLocks others = holds ? UseLocks() : UseLocks{OpenLock(LockPath(folder), false), OpenLock(folder, false)};
    const UseLocks& locks = holds ? own.locks : others;
    // Fails closed: where a lock file is there and cannot be opened, it cannot be known whether the folder is in use.
    const bool alone = (locks.beside || !isShared) && locks.TryExclusive();
    if (alone) {
        action();
    }
    if (holds) { // the shared locks are gone: made exclusive, or released by the attempt
        // The asking lock is still held here (it goes with this scope), so no other process can ask before the shared
        // locks are back.
        own.locks.beside->WaitShared(kLockTimeout);
        HoldItself(folder, own.locks);
    }
    return alone;
}

} // namespace orvcapsule::detail
