#pragma once

#include <orvtarsksupport/LocalStream.h>

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

namespace orvtarsksupport::detail {

struct CloseHandleOf {
    void operator()(HANDLE handle) const noexcept
    {
        ::CloseHandle(handle);
    }
};
using Handle = std::unique_ptr<void, CloseHandleOf>;

/// The system's name of a pipe of this machine; empty when `path` names none.
std::wstring PipeName(const orvcore::UTF8String& path);

/// What is left of a call's time, for the system's waits; 0 at the end.
DWORD MillisecondsTo(Deadline deadline) noexcept;

/// How a call ended with this error of the system.
TarskResult FromWindowsError(DWORD error) noexcept;

/// An operation on a pipe that the system carries out while the caller waits.
class PipeOperation {
public:
    PipeOperation();
    OVERLAPPED* Begin() noexcept
    {
        return &overlapped_;
    }
    /// Waits for an operation on `pipe` that began with this result of the system's call. At the deadline it is
    /// cancelled. `done` receives the count of bytes.
    TarskResult Finish(HANDLE pipe, BOOL began, Deadline deadline, DWORD& done) noexcept;

private:
    Handle event_;
    OVERLAPPED overlapped_{};
};

/// The security identifier of this process's user, in the system's own form; empty when it cannot be had.
std::vector<std::byte> UserSid();
/// The same as text, "S-1-5-...".
std::wstring UserSidText();

} // namespace orvtarsksupport::detail
