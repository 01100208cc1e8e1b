#include <orvcore/files/TemporaryFolder.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/shared/FileLock.h>
#include <orvcore/text/Guid.h>

#include <algorithm>
#include <set>

// In <temporary folder>/<area>/ lie a folder <guid>, and beside it <guid>.lock, which its process has
// locked until it ends. The system releases the lock however the process ends, so a folder whose lock can be taken is
// not in use. The lock lies beside the folder and not in it: what the folder holds is its user's alone.
//
// The order when one is made: folder, lock file, lock. Between the first and the last step another process would take
// the folder for abandoned, so one that is younger than a day is left alone. The order at the end: content, lock, lock
// file.

namespace orvcore {

namespace fs = std::filesystem;

namespace {

constexpr std::u8string_view kLockExtension = u8".lock";

fs::path LockOf(fs::path folder)
{
    return folder += PathFromUTF8(kLockExtension);
}

fs::path NewFolder(std::u8string_view area)
{
    fs::path folder = TempDirectory() / PathFromUTF8(area);
    // The first process makes the area, for all users of the machine: they make folders in it and remove only their
    // own.
    MakeDirectory(folder, FolderAccess::Shared);
    folder /= Guid::Create().ToString();
    // A folder that is there already is somebody else's, who could read what is put into it.
    if (!MakeDirectory(folder, FolderAccess::OwnerOnly)) {
        throw fs::filesystem_error("cannot create folder", folder, std::make_error_code(std::errc::file_exists));
    }
    return folder;
}

// True for the names of temporary folders and of their locks.
bool IsTemporaryName(const fs::path& name)
{
    const fs::path folder = name.extension() == PathFromUTF8(kLockExtension) ? name.stem() : name;
    const std::string text = ToNarrow(PathToUTF8(folder));
    const auto guid = Guid::FromString(text);
    return guid && guid->ToString() == text;
}

void RemoveIfOwn(const fs::path& path)
{
    if (IsOwn(path)) {
        std::error_code ignored; // the next one who works here tries again
        RemoveTree(path, ignored);
    }
}

void RemoveUnlessUsed(const fs::path& folder)
{
    std::error_code error;
    auto lock = FileLock::Open(LockOf(folder), false, error);
    // No lock file: its maker was killed before it made one, or has removed it, or a cleaning program did. One that is
    // there and cannot be opened may be in use.
    const bool isFree = lock ? lock->TryExclusive() : error == std::errc::no_such_file_or_directory;
    if (!isFree) {
        return;
    }
    RemoveIfOwn(folder);
    lock.reset(); // some systems keep a file that is open
    RemoveIfOwn(LockOf(folder));
}

// A folder that was just made may not have its lock yet, so only old ones are looked at.
void RemoveAbandoned(const fs::path& area)
{
    const auto oldest = std::chrono::system_clock::now() - std::chrono::hours(24);
    std::set<fs::path> folders;
    std::error_code error;
    const auto collect = [&](const fs::path& path, FileKind) {
        std::error_code unknown;
        if (IsTemporaryName(path.filename()) && InspectPath(path, unknown).modified < oldest && !unknown) {
            // The folder and its lock lead to one place in the set; of a lock alone the folder is gone already.
            folders.insert(area / path.stem());
        }
        return true;
    };
    ReadDirectory(area, collect, error);
    std::for_each(folders.begin(), folders.end(), RemoveUnlessUsed);
}

} // namespace

TemporaryFolder::TemporaryFolder(std::u8string_view area)
    : path_(NewFolder(area))
{
    std::error_code ignored; // the folder serves without a lock, too, for a day at least
    use_ = FileLock::Open(LockOf(path_), true, ignored);
    if (use_) {
        use_->TryShared();
    }
    RemoveAbandoned(path_.parent_path());
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored; // what stays goes with what killed programs leave
    RemoveTree(path_, ignored);
    // Before the lock file is removed: on Windows a file with an open lock stays.
    use_.reset();
    RemoveTree(LockOf(path_), ignored);
}

} // namespace orvcore
