#include <orvcore/files/Paths.h>
#include <orvcore/files/detail/FolderNotices.h>

#include <windows.h>

#include <array>
#include <utility>

// Each watched folder has an open handle and a request that is always pending; all are tied to one completion port,
// from which notices, cancelled requests and calls of Wake come. The kernel writes into a folder's buffer until its
// request has ended, so a WatchedFolder is destroyed only when the end of its last request has been taken from the
// port: forgetting a folder cancels the request and leaves the rest to the next Wait, or to the destructor. Keys are
// never used twice, so what comes late for a forgotten folder is not taken for another's.

namespace orvcore::detail {

namespace fs = std::filesystem;

namespace {

constexpr DWORD kEvents = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME | FILE_NOTIFY_CHANGE_SIZE |
                          FILE_NOTIFY_CHANGE_LAST_WRITE | FILE_NOTIFY_CHANGE_CREATION;

bool IsSameFolder(HANDLE one, HANDLE other)
{
    BY_HANDLE_FILE_INFORMATION a{};
    BY_HANDLE_FILE_INFORMATION b{};
    return ::GetFileInformationByHandle(one, &a) != 0 && ::GetFileInformationByHandle(other, &b) != 0 &&
           a.dwVolumeSerialNumber == b.dwVolumeSerialNumber && a.nFileIndexHigh == b.nFileIndexHigh &&
           a.nFileIndexLow == b.nFileIndexLow;
}

// One open handle, of the top folder, with a request for it and all below it that is always pending: so the folders
// below are not held. What the system writes into the buffer, or that it had no room there, does not matter: that
// something happened is enough.
class WindowsNotices final : public FolderNotices {
public:
    WindowsNotices(const fs::path& top, bool withSubFolders)
        : top_(top)
        , withSubFolders_(withSubFolders)
    {
        request_.hEvent = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    ~WindowsNotices() override
    {
        Close();
        ::CloseHandle(request_.hEvent);
        ::CloseHandle(wake_);
    }

    Watched Watch(const fs::path& folder) override
    {
        const bool isOpen = handle_ != INVALID_HANDLE_VALUE;
        if (folder != top_) {
            return isOpen && withSubFolders_ ? Watched::Still : Watched::No;
        }
        const HANDLE now = ::CreateFileW(ToSystemPath(top_).c_str(), FILE_LIST_DIRECTORY,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                         FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED, nullptr);
        if (isOpen && now != INVALID_HANDLE_VALUE && IsSameFolder(handle_, now)) {
            ::CloseHandle(now);
            return Watched::Still;
        }
        Close();
        handle_ = now;
        return handle_ != INVALID_HANDLE_VALUE && Ask() ? Watched::Anew : Watched::No;
    }

    void Forget(const fs::path& folder) override
    {
        if (folder == top_) {
            Close();
        }
    }

    bool Wait(std::chrono::milliseconds longest) override
    {
        const std::array<HANDLE, 2> both = {wake_, request_.hEvent};
        const DWORD count = handle_ == INVALID_HANDLE_VALUE ? 1 : 2;
        const auto time = static_cast<DWORD>(longest.count());
        if (::WaitForMultipleObjects(count, both.data(), FALSE, time) != WAIT_OBJECT_0 + 1) {
            return false;
        }
        isPending_ = false;
        DWORD size = 0;
        if (::GetOverlappedResult(handle_, &request_, &size, FALSE) != 0) {
            Ask();
        } else {
            Close(); // the folder is gone, or the thread that asked has ended
        }
        return true;
    }

    void Wake() noexcept override
    {
        ::SetEvent(wake_);
    }

private:
    // A folder that cannot be asked for is not held open.
    bool Ask()
    {
        isPending_ = ::ReadDirectoryChangesW(handle_, buffer_.data(), static_cast<DWORD>(sizeof buffer_),
                                             withSubFolders_ ? TRUE : FALSE, kEvents, nullptr, &request_, nullptr) != 0;
        if (!isPending_) {
            Close();
        }
        return isPending_;
    }

    // The request must have ended before its buffer goes or another one begins: the system would write into it.
    void Close()
    {
        if (std::exchange(isPending_, false)) {
            DWORD size = 0;
            ::CancelIoEx(handle_, &request_);
            ::GetOverlappedResult(handle_, &request_, &size, TRUE);
        }
        if (handle_ != INVALID_HANDLE_VALUE) {
            ::CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE));
        }
    }

    const fs::path top_;
    const bool withSubFolders_;
    const HANDLE wake_ = ::CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE handle_ = INVALID_HANDLE_VALUE;
    bool isPending_ = false;
    OVERLAPPED request_{};
    std::array<DWORD, 1024> buffer_{};
};

} // namespace

std::unique_ptr<FolderNotices> MakeFolderNotices(const fs::path& top, bool withSubFolders)
{
    return std::make_unique<WindowsNotices>(top, withSubFolders);
}

} // namespace orvcore::detail
