#include <orvappsupport/Progress.h>
#include <orvcore/tasks/MainThread.h>
#include <orvcore/tasks/shared/NoDestructor.h>

#include <algorithm>
#include <atomic>
#include <cmath>

// Items are moved by workers and shown on the main thread. The observer's slot, each category and each item have a lock
// of their own. No two are held together, and none while the observer runs, which may set another observer or ask the
// item.
//
// A Begin and an End each carry the item's state of their moment; a Change carries none: it reads the state when its
// turn comes. `changeQueued_` is true from the queueing of a Change until just before that reading, so a later change
// either is part of what is read or queues a report of its own, and the last state always arrives. The queued call
// holds the item alive; when the main thread's queue refuses or drops it, its destructor clears the flag.

namespace orvappsupport {

namespace {

struct ObserverSlot {
    std::mutex mutex;
    std::shared_ptr<const ProgressObserver> observer;
};

ObserverSlot& TheObserver()
{
    static orvcore::NoDestructor<ObserverSlot> slot;
    return *slot;
}

std::shared_ptr<const ProgressObserver> GetObserver()
{
    const std::lock_guard lock(TheObserver().mutex);
    return TheObserver().observer;
}

void Tell(const ProgressReport& report)
{
    if (const auto observer = GetObserver()) {
        (*observer)(report);
    }
}

} // namespace

void SetProgressObserver(ProgressObserver observer)
{
    auto shared = observer ? std::make_shared<const ProgressObserver>(std::move(observer)) : nullptr;
    const std::lock_guard lock(TheObserver().mutex);
    TheObserver().observer.swap(shared);
}

// The one queued report of an item's changes. Refused or dropped, it makes room for the next as well.
class ProgressItem::ChangeCall {
public:
    explicit ChangeCall(std::shared_ptr<ProgressItem> item)
        : item_(std::move(item))
    {
    }
    ChangeCall(ChangeCall&&) noexcept = default;
    ChangeCall& operator=(ChangeCall&&) = delete;
    ~ChangeCall()
    {
        if (item_) {
            item_->ForgetQueuedChange();
        }
    }
    void operator()()
    {
        const std::shared_ptr<ProgressItem> item = std::move(item_);
        item->ForgetQueuedChange(); // before the state is read: a change from now on queues a report of its own
        Tell(item->GetState());
    }

private:
    std::shared_ptr<ProgressItem> item_;
};

ProgressItem::ProgressItem(const orvcore::UTF8String& categoryTitle, const orvcore::UTF8String& title)
{
    static std::atomic<std::uint64_t> lastID = 0;
    state_.itemID = ++lastID;
    state_.categoryTitle = categoryTitle;
    state_.title = title;
}

void ProgressItem::SetTitle(const orvcore::UTF8String& title)
{
    {
        const std::lock_guard lock(mutex_);
        state_.title = title;
    }
    ReportChange();
}

void ProgressItem::SetText(const orvcore::UTF8String& text)
{
    {
        const std::lock_guard lock(mutex_);
        state_.text = text;
    }
    ReportChange();
}

void ProgressItem::SetRange(double lower, double upper)
{
    if (!std::isfinite(lower) || !std::isfinite(upper)) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        state_.lower = lower;
        state_.upper = std::max(lower, upper);
        MoveTo(state_.position);
    }
    ReportChange();
}

void ProgressItem::SetPosition(double position)
{
    {
        const std::lock_guard lock(mutex_);
        MoveTo(position);
    }
    ReportChange();
}

void ProgressItem::Advance(double step)
{
    {
        const std::lock_guard lock(mutex_);
        MoveTo(state_.position + step);
    }
    ReportChange();
}

void ProgressItem::MoveTo(double position)
{
    if (std::isfinite(position)) {
        state_.position = std::clamp(position, state_.lower, state_.upper);
    }
}

ProgressReport ProgressItem::GetState() const
{
    const std::lock_guard lock(mutex_);
    ProgressReport report = state_;
    report.event = ProgressEvent::Change;
    return report;
}

// Reports go to the main thread, where hosts draw, in the order in which they are queued. Without an observer none is
// queued: a host that has no use for them may not pump either, and they would pile up.
void ProgressItem::Report(ProgressEvent event)
{
    if (!GetObserver()) {
        return;
    }
    ProgressReport report = GetState();
    report.event = event;
    static_cast<void>(orvcore::AsyncCallFromMainThread([report = std::move(report)] { Tell(report); }));
}

// Workers advance an item thousands of times a second. One report at a time waits in the queue, and when its turn comes
// it tells the state of then.
void ProgressItem::ReportChange()
{
    if (!GetObserver()) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        if (changeQueued_) {
            return;
        }
        changeQueued_ = true;
    }
    static_cast<void>(orvcore::AsyncCallFromMainThread(ChangeCall(shared_from_this())));
}

void ProgressItem::ForgetQueuedChange()
{
    const std::lock_guard lock(mutex_);
    changeQueued_ = false;
}

ProgressCategory::ProgressCategory(const orvcore::UTF8String& title)
    : title_(title)
{
}

ProgressCategory::~ProgressCategory()
{
    for (const auto& item : items_) {
        item->Report(ProgressEvent::End);
    }
}

orvcore::UTF8String ProgressCategory::GetTitle() const
{
    return title_;
}

std::shared_ptr<ProgressItem> ProgressCategory::AddItem(const orvcore::UTF8String& title, double lower, double upper)
{
    std::shared_ptr<ProgressItem> item(new ProgressItem(title_, title));
    item->state_.lower = item->state_.position = std::isfinite(lower) ? lower : 0.0;
    item->state_.upper = std::isfinite(upper) ? std::max(item->state_.lower, upper) : item->state_.lower;
    {
        const std::lock_guard lock(mutex_);
        items_.push_back(item);
    }
    item->Report(ProgressEvent::Begin);
    return item;
}

bool ProgressCategory::HasItem(const std::shared_ptr<ProgressItem>& item) const
{
    const std::lock_guard lock(mutex_);
    return item && std::find(items_.begin(), items_.end(), item) != items_.end();
}

bool ProgressCategory::RemoveItem(const std::shared_ptr<ProgressItem>& item)
{
    {
        const std::lock_guard lock(mutex_);
        if (std::erase(items_, item) == 0) {
            return false;
        }
    }
    item->Report(ProgressEvent::End);
    return true;
}

} // namespace orvappsupport
