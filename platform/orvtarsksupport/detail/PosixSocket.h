#pragma once

#include <orvtarsksupport/LocalStream.h>

#include <sys/un.h>
#include <unistd.h>

namespace orvtarsksupport::detail {

/// A file descriptor, closed at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int descriptor) noexcept
        : descriptor_(descriptor)
    {
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    int Get() const noexcept
    {
        return descriptor_;
    }
    int Release() noexcept
    {
        return std::exchange(descriptor_, -1);
    }

private:
    int descriptor_;
};

/// The address of a path's socket; false for a path that is empty, holds a NUL or is longer than the system takes.
bool MakeAddress(const orvcore::UTF8String& path, sockaddr_un& address) noexcept;

/// Waits until the socket is ready for `events` or has failed, at most to the deadline.
TarskResult WaitForSocket(int socket, short events, Deadline deadline);

/// How a call ended that left `errno`.
TarskResult FromErrno() noexcept;

} // namespace orvtarsksupport::detail
