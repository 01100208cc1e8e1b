#include <orvcore/files/shared/RenameOver.h>

#include <orvcore/files/AtomicFile.h>

namespace orvcore {

namespace fs = std::filesystem;

bool RenameOver(const fs::path& from, const fs::path& to, std::error_code& error)
{
    if (CheckReplaceable(to, error)) {
        // In one step, also while others have the old file open: they keep it until they close it.
        fs::rename(from, to, error);
    }
    return !error;
}

} // namespace orvcore
