#pragma once

#include <sources/CheckCancel.h>
#include <sources/shared/FreeElsewhere.h>

#include <orvcore/tasks/MainThread.h>

#include <boost/shared_ptr.hpp>

#include <memory>
#include <utility>

namespace orvcapsule::detail {

/// Queues `call(*callback)` for the main thread, where it is dropped when the token has been aborted meanwhile. Without
/// a callback nothing is queued. `call` holds results and nothing that must end on the main thread.
/// The token is looked at on the main thread, the only one that aborts it for a newer request: once a host has made
/// that request, no delivery of the older one comes.
template <class Callback, class Call>
void Deliver(boost::shared_ptr<CheckCancel> token, std::shared_ptr<Callback> callback, Call call)
{
    if (!callback || !*callback) {
        return;
    }
    orvcore::AsyncCallFromMainThread(
        [token = std::move(token), callback = std::move(callback), call = std::move(call)]() mutable {
            if (!token->GetAbort()) {
                call(*callback);
            } else {
                FreeElsewhere(std::move(call));
            }
        });
}

} // namespace orvcapsule::detail
