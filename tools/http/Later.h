#pragma once

#include <tools/http/Message.h>

#include <functional>
#include <mutex>
#include <optional>

namespace orvtools::http {

namespace detail {
class Connection;
}

/// An answer that is not there yet: a handler puts one into its response, keeps a pointer to it and returns, so that no
/// thread waits. Of the response that holds it only the headers count, which the answer gets besides its own. Any
/// thread may call; no call waits. Whoever keeps it answers in the end: the server has no time limit of its own.
///
/// The connection is closed after such an answer, and a client that sends something before it has come is cut off.
class Later {
public:
    /// Answers; the first time counts.
    void Answer(Response response);
    /// False when the answer has been taken, or nobody waits for it any more.
    bool IsAwaited() const;

private:
    friend class detail::Connection;

    void OnAnswer(std::function<void()> wake);
    Response Take();
    void Abandon();

    mutable std::mutex mutex_;
    std::optional<Response> response_;
    bool isAwaited_ = true;
    std::function<void()> wake_; // tells the connection; called under the lock, so that none is told after it has left
};

} // namespace orvtools::http
