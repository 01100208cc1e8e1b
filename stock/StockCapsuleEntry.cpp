#include <stock/StockCapsuleEntry.h>

#include <orvcore/tasks/shared/NoDestructor.h>

#include <mutex>
#include <utility>

// Two members change after an entry was handed out: the preview's path (set when its download ends) and the description
// (set by DownloadJSON). All other members are only read from then on and have no lock. A host that copies an entry
// while one of the two is set has to wait for that itself, because copying takes no lock.

namespace orvcapsule {

namespace {

// One for all entries, which can be copied so; it is held for a copy of a path or a pointer.
std::mutex& LateMembers()
{
    static orvcore::NoDestructor<std::mutex> mutex;
    return *mutex;
}

} // namespace

StockCapsuleEntry::StockCapsuleEntry() = default;
StockCapsuleEntry::StockCapsuleEntry(const StockCapsuleEntry&) = default;
StockCapsuleEntry& StockCapsuleEntry::operator=(const StockCapsuleEntry&) = default;
StockCapsuleEntry::~StockCapsuleEntry() = default;

orvcore::UTF8String StockCapsuleEntry::GetVideoPreviewPath() const
{
    const std::lock_guard lock(LateMembers());
    return videoPreviewPath;
}

void StockCapsuleEntry::SetVideoPreviewPath(const orvcore::UTF8String& preview)
{
    const std::lock_guard lock(LateMembers());
    videoPreviewPath = preview;
}

std::shared_ptr<Capsule> StockCapsuleEntry::GetCapsule() const
{
    const std::lock_guard lock(LateMembers());
    return capsule_;
}

void StockCapsuleEntry::SetCapsule(std::shared_ptr<Capsule> capsule)
{
    const std::lock_guard lock(LateMembers());
    capsule_.swap(capsule); // the old one goes with the argument, after the lock
}

} // namespace orvcapsule
