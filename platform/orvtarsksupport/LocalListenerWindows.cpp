#include <orvtarsksupport/LocalListener.h>

#include <orvtarsksupport/detail/WindowsPipe.h>

#include <sddl.h>

// A pipe has no queue: each instance is one client's. The listener always has one instance that waits; when a client
// has come, the instance becomes its stream, and a new one is made before anything else. As long as one stands, nobody
// else can make a first instance of the name.

namespace orvtarsksupport {

namespace {

constexpr std::intptr_t kNoPipe = -1;

// The first instance fails where the pipe is there already: somebody else's clients would come to it otherwise. The
// pipe is this user's, also of one with raised rights, and nobody else can open it.
std::intptr_t MakeInstance(const orvcore::UTF8String& path, DWORD first)
{
    // What a writer can leave in the pipe without waiting; the system gives more where it must.
    constexpr DWORD kBuffer = 65536;
    const std::wstring user = detail::UserSidText();
    // Owner: the user. One entry, protected from inherited ones: all rights for the user. With raised rights the owner
    // would otherwise be the group of administrators, and an ordinary process of the same user would not know its own
    // broker.
    const std::wstring rights = L"O:" + user + L"D:P(A;;GA;;;" + user + L")";
    SECURITY_ATTRIBUTES security{sizeof security, nullptr, FALSE};
    if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(rights.c_str(), SDDL_REVISION_1,
                                                                &security.lpSecurityDescriptor, nullptr)) {
        return kNoPipe;
    }
    const std::unique_ptr<void, decltype(&::LocalFree)> free(security.lpSecurityDescriptor, &::LocalFree);
    return reinterpret_cast<std::intptr_t>(
        ::CreateNamedPipeW(detail::PipeName(path).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | first,
                           PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
                           PIPE_UNLIMITED_INSTANCES, kBuffer, kBuffer, 0, &security));
}

} // namespace

LocalListener::LocalListener(orvcore::UTF8String path, std::intptr_t handle, std::uint64_t inode)
    : path_(std::move(path))
    , handle_(handle)
    , inode_(inode)
{
}

LocalListener::~LocalListener()
{
    if (handle_ != kNoPipe) {
        ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
    }
}

std::unique_ptr<LocalListener> LocalListener::Open(const orvcore::UTF8String& path, std::error_code& error)
{
    error.clear();
    if (detail::PipeName(path).empty()) {
        error = std::make_error_code(std::errc::invalid_argument);
        return nullptr;
    }
    const std::intptr_t handle = MakeInstance(path, FILE_FLAG_FIRST_PIPE_INSTANCE);
    if (handle == kNoPipe) {
        error = {static_cast<int>(::GetLastError()), std::system_category()};
        return nullptr;
    }
    return std::unique_ptr<LocalListener>(new LocalListener(path, handle));
}

std::optional<LocalStream> LocalListener::Accept(Deadline deadline)
{
    if (handle_ == kNoPipe) {
        handle_ = MakeInstance(path_, 0);
    }
    const HANDLE pipe = reinterpret_cast<HANDLE>(handle_);
    detail::PipeOperation operation;
    DWORD unused = 0;
    const BOOL began = ::ConnectNamedPipe(pipe, operation.Begin());
    const DWORD error = began ? ERROR_SUCCESS : ::GetLastError();
    // A client may have come before the call, and may have gone again: what it wrote can still be read.
    const bool isThere = error == ERROR_PIPE_CONNECTED || error == ERROR_NO_DATA;
    if (!isThere && !operation.Finish(pipe, began, deadline, unused)) {
        return std::nullopt;
    }
    // The pipe must not vanish while the last client is served: the next instance stands before this one goes.
    const std::intptr_t connected = handle_;
    handle_ = MakeInstance(path_, 0);
    return LocalStream(connected);
}

} // namespace orvtarsksupport
