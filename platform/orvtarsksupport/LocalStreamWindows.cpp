#include <orvtarsksupport/LocalStream.h>

#include <orvtarsksupport/BrokerTransport.h>
#include <orvtarsksupport/detail/WindowsPipe.h>

#include <aclapi.h>
#include <sddl.h>

#include <algorithm>

// All operations on a pipe are overlapped: they begin, and the caller waits for their event as long as its time lasts.
// Otherwise a read from a broker that says nothing could not be ended. An operation that is given up is cancelled, and
// the cancelling waited for: its structure and the caller's memory belong to the system until then.

namespace orvtarsksupport {

using namespace std::chrono;

namespace detail {

std::wstring PipeName(const orvcore::UTF8String& path)
{
    constexpr std::wstring_view kHere = L"\\\\.\\pipe\\"; // not a pipe of another machine, nor a file
    const orvcore::UTF16String utf16 = orvcore::ToUTF16(path);
    std::wstring name(utf16.begin(), utf16.end());
    const bool isPipe = name.size() > kHere.size() && name.find(L'\0') == name.npos &&
                        ::_wcsnicmp(name.c_str(), kHere.data(), kHere.size()) == 0;
    return isPipe ? name : std::wstring();
}

DWORD MillisecondsTo(Deadline deadline) noexcept
{
    const auto left = ceil<milliseconds>(deadline - steady_clock::now()).count();
    return static_cast<DWORD>(std::clamp<std::int64_t>(left, 0, 0x7FFFFFFF));
}

TarskResult FromWindowsError(DWORD error) noexcept
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return {TarskStatus::NoBroker};
    // What our own cancelling at the deadline ends with.
    case ERROR_OPERATION_ABORTED:
    case ERROR_SEM_TIMEOUT:
        return {TarskStatus::TimedOut};
    // The other end has closed: the first for a read, the second for a write, the third when it had closed before.
    case ERROR_BROKEN_PIPE:
    case ERROR_NO_DATA:
    case ERROR_PIPE_NOT_CONNECTED:
        return {TarskStatus::BrokenOff};
    default:
        return {TarskStatus::Failed, {static_cast<int>(error), std::system_category()}};
    }
}

PipeOperation::PipeOperation()
    : event_(::CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    overlapped_.hEvent = event_.get();
}

TarskResult PipeOperation::Finish(HANDLE pipe, BOOL began, Deadline deadline, DWORD& done) noexcept
{
    if (!began && ::GetLastError() != ERROR_IO_PENDING) {
        return FromWindowsError(::GetLastError());
    }
    if (::WaitForSingleObject(event_.get(), MillisecondsTo(deadline)) != WAIT_OBJECT_0) {
        ::CancelIoEx(pipe, &overlapped_);
    }
    // Waits for the cancellation too, for the system still writes to the caller's memory; what was done by then counts.
    if (!::GetOverlappedResult(pipe, &overlapped_, &done, TRUE)) {
        return FromWindowsError(::GetLastError());
    }
    return {};
}

std::vector<std::byte> UserSid()
{
    HANDLE opened = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &opened)) {
        return {};
    }
    const Handle token(opened);
    DWORD size = 0;
    // Fails, and tells the size that it needs.
    ::GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<std::byte> buffer(size);
    if (size == 0 || !::GetTokenInformation(token.get(), TokenUser, buffer.data(), size, &size)) {
        return {};
    }
    const PSID sid = reinterpret_cast<const TOKEN_USER*>(buffer.data())->User.Sid;
    const auto* begin = static_cast<const std::byte*>(sid);
    return {begin, begin + ::GetLengthSid(sid)};
}

std::wstring UserSidText()
{
    std::vector<std::byte> user = UserSid();
    wchar_t* text = nullptr;
    if (user.empty() || !::ConvertSidToStringSidW(user.data(), &text)) {
        return {};
    }
    const std::unique_ptr<wchar_t, decltype(&::LocalFree)> free(text, &::LocalFree);
    return text;
}

} // namespace detail

namespace {

HANDLE AsHandle(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

// The owner of a pipe is whoever made it, and nobody else can be written there. Administrators own what they make with
// raised rights; they and the system may do everything anyway.
TarskResult CheckOwner(HANDLE pipe)
{
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD failed = ::GetSecurityInfo(pipe, SE_KERNEL_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr,
                                           nullptr, &descriptor);
    const std::unique_ptr<void, decltype(&::LocalFree)> free(descriptor, &::LocalFree);
    if (failed != ERROR_SUCCESS || owner == nullptr) {
        return {TarskStatus::ForeignBroker};
    }
    std::vector<std::byte> user = detail::UserSid();
    const bool isTrusted = (!user.empty() && ::EqualSid(owner, user.data())) ||
                           ::IsWellKnownSid(owner, WinLocalSystemSid) ||
                           ::IsWellKnownSid(owner, WinBuiltinAdministratorsSid);
    return {isTrusted ? TarskStatus::Delivered : TarskStatus::ForeignBroker};
}

// Opens the pipe, waiting while all its instances serve others. The server learns who calls but cannot act as them.
TarskResult OpenPipe(const std::wstring& name, Deadline deadline, detail::Handle& pipe)
{
    for (;;) {
        const HANDLE opened =
            ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                          FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr);
        if (opened != INVALID_HANDLE_VALUE) {
            pipe.reset(opened);
            return {};
        }
        if (::GetLastError() != ERROR_PIPE_BUSY) {
            return detail::FromWindowsError(::GetLastError());
        }
        const DWORD left = detail::MillisecondsTo(deadline);
        if (left == 0) {
            return {TarskStatus::TimedOut};
        }
        ::WaitNamedPipeW(name.c_str(), left); // another client may be quicker: the next attempt tells
    }
}

// Moves all of `size` bytes; `begin` starts with those from an offset on.
template <class Begin>
TarskResult Transfer(HANDLE pipe, std::size_t size, Deadline deadline, Begin begin)
{
    for (std::size_t at = 0; at < size;) {
        if (detail::MillisecondsTo(deadline) == 0) { // a peer may keep an operation ending without a byte
            return {TarskStatus::TimedOut};
        }
        detail::PipeOperation operation;
        DWORD done = 0;
        const BOOL began = begin(at, operation.Begin());
        if (const TarskResult result = operation.Finish(pipe, began, deadline, done); !result) {
            return result;
        }
        at += done;
    }
    return {};
}

} // namespace

orvcore::UTF8String DefaultBrokerPath()
{
    const std::wstring user = detail::UserSidText();
    return u8"\\\\.\\pipe\\orv-broker-" + orvcore::ToUTF8(orvcore::UTF16String(user.begin(), user.end()));
}

LocalStream::~LocalStream()
{
    if (handle_ != kNone) {
        ::CloseHandle(AsHandle(handle_));
    }
}

TarskResult LocalStream::Connect(const orvcore::UTF8String& path, Deadline deadline, LocalStream& stream)
{
    const std::wstring name = detail::PipeName(path);
    if (name.empty()) {
        return {TarskStatus::Failed, std::make_error_code(std::errc::invalid_argument)};
    }
    detail::Handle pipe;
    TarskResult result = OpenPipe(name, deadline, pipe);
    if (result) {
        result = CheckOwner(pipe.get());
    }
    if (result) {
        stream = LocalStream(reinterpret_cast<std::intptr_t>(pipe.release()));
    }
    return result;
}

TarskResult LocalStream::Write(std::string_view bytes, Deadline deadline)
{
    return Transfer(AsHandle(handle_), bytes.size(), deadline, [&](std::size_t at, OVERLAPPED* overlapped) {
        return ::WriteFile(AsHandle(handle_), bytes.data() + at, static_cast<DWORD>(bytes.size() - at), nullptr,
                           overlapped);
    });
}

TarskResult LocalStream::Read(std::span<char> bytes, Deadline deadline)
{
    return Transfer(AsHandle(handle_), bytes.size(), deadline, [&](std::size_t at, OVERLAPPED* overlapped) {
        return ::ReadFile(AsHandle(handle_), bytes.data() + at, static_cast<DWORD>(bytes.size() - at), nullptr,
                          overlapped);
    });
}

} // namespace orvtarsksupport
