#pragma once

#include <orvcore/text/Strings.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace orvappsupport {

/// What happened to a progress item.
enum class ProgressEvent {
    Begin,  ///< it joined its category
    Change, ///< its title, text, range or position changed
    End,    ///< it left its category; a last text may still follow as a Change, telling why
};

/// One item at the moment of the report.
struct ProgressReport {
    ProgressEvent event = ProgressEvent::Begin;
    std::uint64_t itemID = 0; ///< tells items apart; never used twice in a process
    orvcore::UTF8String categoryTitle;
    orvcore::UTF8String title;
    orvcore::UTF8String text;
    double lower = 0.0; ///< the range; `lower` <= `position` <= `upper`
    double upper = 1.0;
    double position = 0.0;

    /// The part done, 0 to 1; 0 for an empty range.
    double GetFraction() const noexcept
    {
        return upper > lower ? (position - lower) / (upper - lower) : 0.0;
    }
};

/// Told of every item's begin and end and of its changes, on the host's main thread.
using ProgressObserver = std::function<void(const ProgressReport&)>;

/// Installs the host's observer; empty (the default) for none. It is told of what happens from now on.
/// Reports are queued with `AsyncCallFromMainThread`, a change only when no change of that item is queued yet: however
/// fast work advances, each item costs the main thread at most one change for each time it pumps, and the last
/// state always arrives.
ORVPLATFORM_API void SetProgressObserver(ProgressObserver observer);

/// One line of the host's progress display. Made by `ProgressCategory::AddItem`, shared by pointer; all members may be
/// called from any thread, and after the item left its category.
class ORVPLATFORM_API ProgressItem : public std::enable_shared_from_this<ProgressItem> {
public:
    ProgressItem(const ProgressItem&) = delete;
    ProgressItem& operator=(const ProgressItem&) = delete;

    /// The line's heading, and the text below it: what is being done now, or why it stopped.
    void SetTitle(const orvcore::UTF8String& title);
    void SetText(const orvcore::UTF8String& text);
    /// Sets the range and moves the position into it. An upper end below `lower` counts as `lower`.
    void SetRange(double lower, double upper);
    /// Moves to `position`, or by `step`; kept inside the range, and anything not finite is ignored.
    void SetPosition(double position);
    void Advance(double step);

    /// The item as it stands (as a Change).
    ProgressReport GetState() const;

private:
    friend class ProgressCategory;
    ProgressItem(const orvcore::UTF8String& categoryTitle, const orvcore::UTF8String& title);

    void Report(ProgressEvent event);
    void ReportChange();
    class ChangeCall;
    void ForgetQueuedChange();
    void MoveTo(double position);

    mutable std::mutex mutex_;
    ProgressReport state_;
    bool changeQueued_ = false;
};

/// A titled group of progress items, opened for one piece of work. All members may be called from any thread.
class ORVPLATFORM_API ProgressCategory {
public:
    explicit ProgressCategory(const orvcore::UTF8String& title);
    ProgressCategory(const ProgressCategory&) = delete;
    ProgressCategory& operator=(const ProgressCategory&) = delete;
    /// Removes the items that are still there.
    ~ProgressCategory();

    orvcore::UTF8String GetTitle() const;

    /// Begins an item that runs from `lower` to `upper`.
    std::shared_ptr<ProgressItem> AddItem(const orvcore::UTF8String& title, double lower, double upper);
    /// True while the category holds `item`; false for an empty pointer.
    bool HasItem(const std::shared_ptr<ProgressItem>& item) const;
    /// Ends an item; false when the category does not hold it. Of several threads that remove one item, one gets true.
    bool RemoveItem(const std::shared_ptr<ProgressItem>& item);

private:
    const orvcore::UTF8String title_;
    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<ProgressItem>> items_;
};

} // namespace orvappsupport
