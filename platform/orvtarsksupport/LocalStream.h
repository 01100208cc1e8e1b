#pragma once

#include <orvtarsksupport/TarskTransport.h>

#include <chrono>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

namespace orvtarsksupport {

/// The time at which a call returns at the latest, finished or not.
using Deadline = std::chrono::steady_clock::time_point;

/// One end of a connection between two programs of this machine: a local stream socket, on Windows a named pipe. No
/// call blocks beyond its deadline, and a peer that goes away raises no signal. One thread at a time.
class ORVPLATFORM_API LocalStream {
public:
    LocalStream() = default;
    LocalStream(LocalStream&& other) noexcept
        : handle_(std::exchange(other.handle_, std::intptr_t{kNone}))
    {
    }
    LocalStream& operator=(LocalStream&& other) noexcept
    {
        std::swap(handle_, other.handle_);
        return *this;
    }
    /// Closes the connection.
    ~LocalStream();

    /// Connects to the listener at `path` (UTF-8) after making sure that its folder and its process belong to this user
    /// or the system: another user of the machine must not be able to pose as the broker.
    static TarskResult Connect(const orvcore::UTF8String& path, Deadline deadline, LocalStream& stream);

    /// Writes all of the bytes.
    TarskResult Write(std::string_view bytes, Deadline deadline);
    /// Fills all of the bytes.
    TarskResult Read(std::span<char> bytes, Deadline deadline);

private:
    friend class LocalListener;
    static constexpr std::intptr_t kNone = -1;
    explicit LocalStream(std::intptr_t handle) noexcept
        : handle_(handle)
    {
    }

    std::intptr_t handle_ = kNone; // a file descriptor or a HANDLE
};

} // namespace orvtarsksupport
