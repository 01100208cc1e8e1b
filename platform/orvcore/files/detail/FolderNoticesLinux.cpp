#include <orvcore/files/detail/FolderNotices.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <map>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

// One inotify queue for all folders, and an eventfd to wake the one who waits. The kernel numbers watches: by inode, so
// a folder that was renamed and is watched again under its new path keeps its number. When the queue overflows the
// kernel says so and drops notices; who hears that compares everything. A user has a limited number of watches for all
// programs: Watch then answers false, and the folder is compared from time to time.

namespace orvcore::detail {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE | IN_ATTRIB |
                                  IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW;

// A descriptor of the system; -1 where there is none.
class Descriptor {
public:
    explicit Descriptor(int number)
        : number_(number)
    {
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    int Get() const noexcept
    {
        return number_;
    }

private:
    int number_;
};

} // namespace

class FolderNotices::Impl {
public:
    bool Watch(const fs::path& folder)
    {
        if (numbers_.contains(folder)) {
            return true;
        }
        const int number = ::inotify_add_watch(queue_.Get(), folder.c_str(), kEvents);
        if (number < 0) {
            return false;
        }
        folders_[number] = folder; // a folder that was renamed keeps its number
        numbers_[folder] = number;
        return true;
    }

    void Forget(const fs::path& folder)
    {
        const auto known = numbers_.find(folder);
        if (known != numbers_.end()) {
            ::inotify_rm_watch(queue_.Get(), known->second);
            folders_.erase(known->second);
            numbers_.erase(known);
        }
    }

    Heard Wait(std::chrono::milliseconds longest)
    {
        Heard heard;
        std::array<pollfd, 2> asked = {pollfd{queue_.Get(), POLLIN, 0}, pollfd{wake_.Get(), POLLIN, 0}};
        if (::poll(asked.data(), asked.size(), static_cast<int>(longest.count())) <= 0) {
            return heard;
        }
        std::uint64_t count = 0;
        while (::read(wake_.Get(), &count, sizeof count) > 0) {
        }
        alignas(inotify_event) std::array<char, 16384> bytes{};
        for (;;) {
            const ssize_t size = ::read(queue_.Get(), bytes.data(), bytes.size());
            if (size <= 0) {
                return heard;
            }
            Take({bytes.data(), static_cast<std::size_t>(size)}, heard);
        }
    }

    void Wake() noexcept
    {
        const std::uint64_t one = 1;
        static_cast<void>(::write(wake_.Get(), &one, sizeof one) < 0); // full: awake already
    }

private:
    void Take(std::string_view bytes, Heard& heard)
    {
        while (bytes.size() >= sizeof(inotify_event)) {
            const auto* event = reinterpret_cast<const inotify_event*>(bytes.data());
            heard.isIncomplete = heard.isIncomplete || (event->mask & IN_Q_OVERFLOW) != 0;
            if (const auto folder = folders_.find(event->wd); folder != folders_.end()) {
                heard.folders.insert(folder->second);
                if ((event->mask & IN_IGNORED) != 0) { // the folder is gone, and its number with it
                    numbers_.erase(folder->second);
                    folders_.erase(folder);
                }
            }
            bytes.remove_prefix(sizeof(inotify_event) + event->len);
        }
    }

    const Descriptor queue_{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
    const Descriptor wake_{::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    std::map<int, fs::path> folders_;
    std::map<fs::path, int> numbers_;
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
