#include <orvcore/files/shared/ConditionalCommit.h>

#include <orvcore/files/shared/FileLock.h>

#include <chrono>

namespace orvcore::detail {

bool ConditionalCommit::Run(AtomicFile& file, const std::function<bool()>& isWanted, Durability durability,
                            std::optional<FileVersion>& placed, std::error_code& error)
{
    constexpr std::chrono::seconds kLockTimeout{10}; // others hold the lock for a rename only
    if (!file.Complete(durability, error)) {
        return false;
    }
    // From here to the rename, which is all that others wait for. No lock and no error: the file system knows no locks,
    // and the question below has to do alone.
    const auto lock = FileLock::ForMoment(file.Folder(), kLockTimeout, error);
    if (error) {
        return false;
    }
    if (!isWanted()) {
        error = std::make_error_code(std::errc::operation_canceled);
        return false;
    }
    // Asked before the rename: after it, and once the lock is gone, the path may lead to the next program's file.
    const auto version = VersionAt(file.private_); // a rename changes none of it
    if (!file.PutInPlace(error)) {
        return false;
    }
    placed = version;
    return true;
}

} // namespace orvcore::detail
