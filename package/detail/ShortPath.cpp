#include <package/detail/ShortPath.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/text/Guid.h>

#include <algorithm>
#include <set>

namespace orvcapsule::detail {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongestPath = 220;
constexpr std::u8string_view kLockExtension = u8".lock";

fs::path LockOf(fs::path folder)
{
    return folder += orvcore::PathFromUTF8(kLockExtension);
}

// True for the names of private folders and of their locks.
bool IsPrivateName(const fs::path& name)
{
    const fs::path folder = name.extension() == orvcore::PathFromUTF8(kLockExtension) ? name.stem() : name;
    const std::string text = orvcore::ToNarrow(orvcore::PathToUTF8(folder));
    const auto guid = orvcore::Guid::FromString(text);
    return guid && guid->ToString() == text;
}

void RemoveIfOwn(const fs::path& path)
{
    if (orvcore::IsOwn(path)) {
        std::error_code ignored; // the next one who works here tries again
        orvcore::RemoveTree(path, ignored);
    }
}

void RemoveUnlessUsed(const fs::path& folder)
{
    auto lock = orvcore::FileLock::Open(LockOf(folder), false);
    if (lock && !lock->TryExclusive()) {
        return;
    }
    RemoveIfOwn(folder);
    lock.reset(); // some systems keep a file that is open
    RemoveIfOwn(LockOf(folder));
}

void RemoveAbandoned(const fs::path& area)
{
    const auto oldest = std::chrono::system_clock::now() - std::chrono::hours(24);
    std::set<fs::path> folders;
    std::error_code error;
    const auto collect = [&](const fs::path& path, orvcore::FileKind) {
        std::error_code unknown;
        if (IsPrivateName(path.filename()) && orvcore::InspectPath(path, unknown).modified < oldest && !unknown) {
            folders.insert(area / path.stem());
        }
        return true;
    };
    orvcore::ReadDirectory(area, collect, error);
    std::for_each(folders.begin(), folders.end(), RemoveUnlessUsed);
}

} // namespace

PrivateFolder::PrivateFolder()
    : folder_(u8"Capsule")
    , use_(orvcore::FileLock::Open(LockOf(Path()), true))
{
    if (use_) {
        use_->TryShared();
    }
    RemoveAbandoned(Path().parent_path());
}

PrivateFolder::~PrivateFolder()
{
    use_.reset();
    std::error_code ignored;
    orvcore::RemoveTree(LockOf(Path()), ignored);
}

bool IsLongPath(const orvcore::UTF8String& path)
{
    return path.size() > kLongestPath;
}

std::shared_ptr<const PrivateFolder> FolderForLongPath(const orvcore::UTF8String& path)
{
    return IsLongPath(path) ? std::make_shared<PrivateFolder>() : nullptr;
}

} // namespace orvcapsule::detail
