#include <orvcore/files/detail/FolderNotices.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <map>
#include <string_view>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

// One inotify queue for all folders, and an eventfd to wake the waiting thread. The kernel numbers watches: by inode,
// so a folder that was renamed and is watched again under its new path keeps its number. When the queue overflows the
// kernel says so and drops notices; the watcher then compares everything. A user has a limited number of watches for
// all programs: Watch then answers false, and the folder is compared from time to time.

namespace orvcore::detail {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE | IN_ATTRIB |
                                  IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

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

class LinuxNotices final : public FolderNotices {
public:
    // The system numbers folders, not names: it has the same number for a folder that was renamed, and another one for
    // the folder that took its name.
    Watched Watch(const fs::path& folder) override
    {
        const int number = ::inotify_add_watch(queue_.Get(), folder.c_str(), kEvents);
        if (const auto known = numbers_.find(folder); known != numbers_.end() && known->second == number) {
            return Watched::Still;
        }
        Forget(folder);
        if (number < 0) {
            return Watched::No;
        }
        if (const auto renamed = folders_.find(number); renamed != folders_.end()) {
            numbers_.erase(renamed->second);
        }
        folders_[number] = folder;
        numbers_[folder] = number;
        return Watched::Anew;
    }

    void Forget(const fs::path& folder) override
    {
        if (const auto known = numbers_.find(folder); known != numbers_.end()) {
            ::inotify_rm_watch(queue_.Get(), known->second);
            folders_.erase(known->second);
            numbers_.erase(known);
        }
    }

    bool Wait(std::chrono::milliseconds longest) override
    {
        std::array<pollfd, 2> asked = {pollfd{queue_.Get(), POLLIN, 0}, pollfd{wake_.Get(), POLLIN, 0}};
        if (::poll(asked.data(), asked.size(), static_cast<int>(longest.count())) <= 0) {
            return false;
        }
        std::uint64_t count = 0;
        while (::read(wake_.Get(), &count, sizeof count) > 0) {
        }
        bool hasHappened = false;
        alignas(inotify_event) std::array<char, 16384> bytes{};
        for (;;) {
            const ssize_t size = ::read(queue_.Get(), bytes.data(), bytes.size());
            if (size <= 0) {
                return hasHappened;
            }
            hasHappened = Take({bytes.data(), static_cast<std::size_t>(size)}) || hasHappened;
        }
    }

    void Wake() noexcept override
    {
        const std::uint64_t one = 1;
        static_cast<void>(::write(wake_.Get(), &one, sizeof one) < 0); // full: awake already
    }

private:
    // @return whether a notice is among them that is not one of a folder that was forgotten
    bool Take(std::string_view bytes)
    {
        bool hasHappened = false;
        while (bytes.size() >= sizeof(inotify_event)) {
            const auto* event = reinterpret_cast<const inotify_event*>(bytes.data());
            const auto folder = folders_.find(event->wd);
            hasHappened = hasHappened || folder != folders_.end() || (event->mask & IN_Q_OVERFLOW) != 0;
            if (folder != folders_.end() && (event->mask & IN_IGNORED) != 0) { // it is gone, and its number with it
                numbers_.erase(folder->second);
                folders_.erase(folder);
            }
            bytes.remove_prefix(sizeof(inotify_event) + event->len);
        }
        return hasHappened;
    }

    const Descriptor queue_{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
    const Descriptor wake_{::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    std::map<int, fs::path> folders_; // and the other way round; each has what the other has
    std::map<fs::path, int> numbers_;
};

} // namespace

std::unique_ptr<FolderNotices> MakeFolderNotices(const fs::path& /*top*/, bool /*withSubFolders*/)
{
    return std::make_unique<LinuxNotices>();
}

} // namespace orvcore::detail
