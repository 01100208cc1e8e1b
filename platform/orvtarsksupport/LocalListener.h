#pragma once

#include <orvtarsksupport/LocalStream.h>

#include <memory>
#include <optional>
#include <system_error>

namespace orvtarsksupport {

/// The place to which clients of `LocalStream` connect. Brokers for development and tests use it. One thread at a time.
class ORVPLATFORM_API LocalListener {
public:
    /// Listens at `path` (UTF-8). On Linux the socket's folder must be there; only this user can connect, and a socket
    /// that a program left behind is replaced. Empty with an `error` when another listens there, or is about to (then
    /// "device or resource busy"), or the system refuses.
    static std::unique_ptr<LocalListener> Open(const orvcore::UTF8String& path, std::error_code& error);

    LocalListener(const LocalListener&) = delete;
    LocalListener& operator=(const LocalListener&) = delete;
    /// Ends listening; the socket's file goes, unless another has taken its place.
    ~LocalListener();

    /// The next client's connection; nothing when none came before the deadline.
    std::optional<LocalStream> Accept(Deadline deadline);

private:
    LocalListener(orvcore::UTF8String path, std::intptr_t handle, std::uint64_t inode = 0);

    const orvcore::UTF8String path_;
    std::intptr_t handle_;      // the socket, or the pipe's instance that waits for the next client
    const std::uint64_t inode_; // of the socket's file; a pipe has none
};

} // namespace orvtarsksupport
