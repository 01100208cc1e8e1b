#include <orvcore/files/Paths.h>
#include <orvcore/files/detail/FolderNotices.h>

#include <windows.h>

#include <array>
#include <map>

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
constexpr ULONG_PTR kWakeKey = 0;

// One folder's open handle with a request that is always pending. What the system writes into the buffer is not read:
// that something happened is enough.
struct WatchedFolder {
    fs::path path;
    ULONG_PTR key = 0;
    HANDLE handle = INVALID_HANDLE_VALUE;
    OVERLAPPED request{};
    std::array<DWORD, 1024> buffer{};
    bool isForgotten = false;

    bool Ask()
    {
        return ::ReadDirectoryChangesW(handle, buffer.data(), static_cast<DWORD>(sizeof buffer), FALSE, kEvents,
                                       nullptr, &request, nullptr) != 0;
    }
};

} // namespace

class FolderNotices::Impl {
public:
    Impl()
        : port_(::CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, 1))
    {
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    // A buffer may go only when its request has ended: the system would write into it.
    ~Impl()
    {
        for (auto& [key, folder] : folders_) {
            End(*folder);
        }
        while (!folders_.empty() && TakeOne(INFINITE, nullptr)) {
        }
        ::CloseHandle(port_);
    }

    bool Watch(const fs::path& path)
    {
        if (keys_.contains(path)) {
            return true;
        }
        auto folder = std::make_unique<WatchedFolder>();
        folder->path = path;
        folder->key = ++lastKey_;
        folder->handle = ::CreateFileW(ToSystemPath(path).c_str(), FILE_LIST_DIRECTORY,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED, nullptr);
        if (folder->handle == INVALID_HANDLE_VALUE) {
            return false;
        }
        if (::CreateIoCompletionPort(folder->handle, port_, folder->key, 0) == nullptr || !folder->Ask()) {
            ::CloseHandle(folder->handle);
            return false;
        }
        keys_[path] = folder->key;
        folders_[folder->key] = std::move(folder);
        return true;
    }

    void Forget(const fs::path& path)
    {
        if (const auto known = keys_.find(path); known != keys_.end()) {
            End(*folders_.at(known->second));
            keys_.erase(known);
        }
    }

    Heard Wait(std::chrono::milliseconds longest)
    {
        Heard heard;
        for (DWORD patience = static_cast<DWORD>(longest.count()); TakeOne(patience, &heard);) {
            patience = 0; // the rest that is there
        }
        return heard;
    }

    void Wake() noexcept
    {
        ::PostQueuedCompletionStatus(port_, 0, kWakeKey, nullptr);
    }

private:
    // Ends the pending request, which is then taken from the port like a notice.
    static void End(WatchedFolder& folder)
    {
        if (!folder.isForgotten) {
            folder.isForgotten = true;
            ::CancelIoEx(folder.handle, &folder.request);
        }
    }

    // @return false at the end of the time
    bool TakeOne(DWORD patience, Heard* heard)
    {
        DWORD size = 0;
        ULONG_PTR key = 0;
        OVERLAPPED* request = nullptr;
        const bool isGood = ::GetQueuedCompletionStatus(port_, &size, &key, &request, patience) != 0;
        if (request == nullptr) {
            return isGood; // a call of Wake, or the end of the time
        }
        const auto found = folders_.find(key);
        if (found == folders_.end()) {
            return true;
        }
        WatchedFolder& folder = *found->second;
        if (heard != nullptr && !folder.isForgotten) {
            heard->folders.insert(folder.path);
        }
        if (folder.isForgotten || !isGood || !folder.Ask()) { // a folder that is gone gives no more
            ::CloseHandle(folder.handle);
            if (const auto known = keys_.find(folder.path); known != keys_.end() && known->second == key) {
                keys_.erase(known);
            }
            folders_.erase(found);
        }
        return true;
    }

    const HANDLE port_;
    ULONG_PTR lastKey_ = kWakeKey;
    std::map<fs::path, ULONG_PTR> keys_;
    std::map<ULONG_PTR, std::unique_ptr<WatchedFolder>> folders_;
};

FolderNotices::FolderNotices()
    : impl_(std::make_unique<Impl>())
{
}
FolderNotices::~FolderNotices() = default;

bool FolderNotices::Watch(const fs::path& folder)
{
    return impl_->Watch(folder);
}

void FolderNotices::Forget(const fs::path& folder)
{
    impl_->Forget(folder);
}

FolderNotices::Heard FolderNotices::Wait(std::chrono::milliseconds longest)
{
    return impl_->Wait(longest);
}

void FolderNotices::Wake() noexcept
{
    impl_->Wake();
}

} // namespace orvcore::detail
