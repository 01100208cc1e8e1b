#pragma once

#include <sources/CheckCancel.h>

#include <orvcore/MainThread.h>

#include <boost/shared_ptr.hpp>

#include <memory>
#include <utility>

namespace orvcapsule::detail {

/// Queues `call(*callback)` for the main thread, where it is dropped when the token has been aborted meanwhile;
/// `dropped` runs in its place. Without a callback nothing is queued.
template <class Callback, class Call, class Dropped>
void Deliver(boost::shared_ptr<CheckCancel> token, std::shared_ptr<Callback> callback, Call call, Dropped dropped)
{
    if (!callback || !*callback) {
        return;
    }
    orvcore::AsyncCallFromMainThread([token = std::move(token), callback = std::move(callback), call = std::move(call),
                                      dropped = std::move(dropped)]() mutable {
        if (token->GetAbort()) {
            dropped();
        } else {
            call(*callback);
        }
    });
}

template <class Callback, class Call>
void Deliver(boost::shared_ptr<CheckCancel> token, std::shared_ptr<Callback> callback, Call call)
{
    Deliver(std::move(token), std::move(callback), std::move(call), [] {});
}

} // namespace orvcapsule::detail
