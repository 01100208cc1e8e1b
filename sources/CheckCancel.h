#pragma once

#include <orvappsupport/Progress.h>
#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

namespace orvcapsule {

class CapsuleEntry;

/// A request's cancellation token, held by `boost::shared_ptr` by the caller that made the request and by the work done
/// for it.
///
/// `Abort` and `GetAbort` may be called from any thread at any time, several pollers included: once an `Abort` has
/// returned, every `GetAbort` that begins afterwards answers true, whichever poller comes first. The other members are
/// filled in before the token is shared and only read from then on.
class ORVCAPSULE_API CheckCancel {
public:
    CheckCancel();
    CheckCancel(const CheckCancel&) = delete;
    CheckCancel& operator=(const CheckCancel&) = delete;
    /// Takes the progress item out of its category if it is still there.
    virtual ~CheckCancel();

    /// Asks the work to stop, without waiting for it, and takes the progress item out of its category. A second call
    /// changes nothing.
    void Abort();

    /// True when the work has to stop; stays true for good. The first poller to see a request consumes it.
    virtual bool GetAbort();

    /// @name What the request shows
    /// Texts set by the caller that made the request.
    /// @{
    orvcore::UTF8String text1;
    orvcore::UTF8String text2;
    /// @}

    /// The line of the host's progress display, or empty; it ends with the token at the latest.
    std::shared_ptr<orvappsupport::ProgressItem> progressItem;
    /// The category that holds `progressItem`, or empty. Work may add items of its own to it.
    std::shared_ptr<orvappsupport::ProgressCategory> progressCategory;

private:
    void RemoveProgressItem();

    std::atomic<std::int32_t> abortRequested = 0; // 0 or 1
    std::atomic<bool> aborted = false;            // set by the poller that consumed the request

public:
    /// For a source to call with each entry of a listing as soon as that is whole, before the listing ends, which hands
    /// out the same entries. On any thread, on several at a time. May be empty; a source need not call it.
    std::function<void(const boost::shared_ptr<CapsuleEntry>&)> onEntryFound;
};

} // namespace orvcapsule
