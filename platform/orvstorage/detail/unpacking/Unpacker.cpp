#include <orvstorage/detail/unpacking/Unpacker.h>

#include <orvcore/files/shared/GuardedFolder.h>
#include <orvcore/files/shared/NativeFile.h>
#include <orvcore/tasks/ParallelFor.h>
#include <orvstorage/detail/unpacking/EntryUnpacking.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <numeric>
#include <thread>

// How a whole archive is unpacked:
//
// - all files are written into a private folder inside the target, under their numbers: no name of the archive is used
//   before all contents have passed their checks;
// - the caller is asked a last time; until here nothing has been changed that the caller could see;
// - folders are made and files moved to their places, one rename each; GuardedFolder notes each step;
// - a step that fails has all earlier ones taken back.
//
// So a full disk, a wrong checksum or a cancel leaves the target as it was. The staging folder lies inside the target
// and not in the temporary folder, because a move is one step only within one file system.
//
// Where there is enough to do, several threads unpack (Stage). The zip library's handle is for one thread, so each
// opens its own on the shared file. Only the caller's thread asks the caller's function: hosts do not expect it on
// others.

namespace orvstorage::detail {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kWorthThreads = std::uint64_t{4} << 20; // below it, opening more handles takes longer
constexpr std::size_t kMostThreads = 8;                         // more would only wait for the disk

// Unpacks the plan's files into numbered files of a private folder, on several threads where there is enough to do.
class Stage {
public:
    Stage(const ZipArchive& archive, const UnpackPlan& plan, const fs::path& folder, ByteProgress& progress)
        : archive_(archive)
        , plan_(plan)
        , folder_(folder)
        , progress_(progress)
    {
    }

    fs::path PathOf(std::size_t number) const
    {
        return folder_ / std::to_string(number);
    }

    ZipFault Run()
    {
        Arrange();
        const std::size_t threads = plan_.totalSize < kWorthThreads ? 1 : std::min(order_.size(), kMostThreads);
        if (threads <= 1) {
            Work(archive_.Handle());
        } else {
            // Each piece takes files until none is left, so it does not matter how many really run at one time.
            const auto piece = [this](std::size_t, std::size_t) {
                if (auto handle = archive_.NewHandle()) {
                    Work((*handle).get());
                } else {
                    Report(0, handle.Fault());
                }
            };
            orvcore::ParallelFor(threads, 1, piece, [this] { HeedCaller(progress_.Ask()); });
        }
        // No lock: all threads that could write it have returned.
        return first_;
    }

private:
    // The largest files come first: one that begins last would keep a single thread busy at the end.
    void Arrange()
    {
        const auto sizeOf = [this](std::size_t number) {
            return archive_.Entries()[plan_.files[number].index].shown.size;
        };
        order_.resize(plan_.files.size());
        std::iota(order_.begin(), order_.end(), std::size_t{0});
        std::stable_sort(order_.begin(), order_.end(),
                         [&](std::size_t a, std::size_t b) { return sizeOf(a) > sizeOf(b); });
    }

    void HeedCaller(bool goesOn)
    {
        if (!goesOn) {
            Report(0, Cancelled());
        }
    }

    void Count(std::size_t bytes)
    {
        // Workers count and the caller asks. While the caller waits for the last of them, ParallelFor lets it ask
        // still.
        progress_.Count(bytes);
        if (std::this_thread::get_id() == caller_) {
            HeedCaller(progress_.MayGoOn());
        }
    }

    void Work(zip_t* handle)
    {
        std::vector<char> piece(kUnpackedPiece);
        for (;;) {
            const std::size_t turn = next_.fetch_add(1);
            if (turn >= order_.size() || stopped_) {
                return;
            }
            const std::size_t number = order_[turn];
            ZipFault fault = UnpackOne(handle, number, piece);
            if (fault && fault.error != ZipError::Cancelled) { // the thread that stopped the work has reported why
                Report(number, std::move(fault).At(archive_.Entries()[plan_.files[number].index].shown.name));
            }
        }
    }

    ZipFault UnpackOne(zip_t* handle, std::size_t number, std::vector<char>& piece)
    {
        const std::size_t index = plan_.files[number].index;
        using orvcore::detail::NativeFile;
        std::error_code error;
        NativeFile file = NativeFile::Open(PathOf(number), NativeFile::Mode::CreateNew, error);
        if (error) {
            return WriteFault(error);
        }
        std::uint64_t done = 0;
        const auto write = [&](const char* data, std::size_t size) {
            if (stopped_) {
                return Cancelled();
            }
            const bool written = file.WriteAt(done, data, size, error);
            done += size;
            Count(size);
            return written ? ZipFault() : WriteFault(error);
        };
        ZipFault fault = StreamEntry(handle, archive_.Entries()[index], index, piece, write);
        return fault || file.Close(error) ? fault : WriteFault(error);
    }

    // Of several faults the one of the first file counts, whatever the order in which the threads meet them. A cancel,
    // or a handle that cannot be had, is told as the first file's, and so before any other. A thread that sees
    // `stopped_` ends without a fault of its own.
    void Report(std::size_t number, ZipFault fault)
    {
        const std::lock_guard lock(mutex_);
        if (number < firstNumber_) {
            first_ = std::move(fault);
            firstNumber_ = number;
        }
        stopped_ = true;
    }

    const ZipArchive& archive_;
    const UnpackPlan& plan_;
    const fs::path& folder_;
    ByteProgress& progress_;
    const std::thread::id caller_ = std::this_thread::get_id();
    std::vector<std::size_t> order_; // of the plan's files
    std::atomic<std::size_t> next_ = 0;
    std::atomic<bool> stopped_ = false;
    std::mutex mutex_;
    ZipFault first_;
    std::size_t firstNumber_ = static_cast<std::size_t>(-1);
};

} // namespace

ZipFault Unpack(const ZipArchive& archive, const UnpackPlan& plan, const fs::path& target, orvcore::IfExists ifExists,
                ByteProgress& progress)
{
    progress.Expect(plan.totalSize);
    if (!progress.MayGoOn()) {
        return Cancelled();
    }
    const auto pathOf = [](const orvcore::UTF8String& relative) {
        return orvcore::PathFromUTF8(relative).make_preferred();
    };
    std::error_code error;
    orvcore::detail::GuardedFolder folder(target);
    const fs::path staging = folder.Open(error);
    if (error) {
        ZipFault fault = WriteFault(error);
        fault.folder = target;
        return fault;
    }
    // From here on every return without Keep has the folder take back what was done, and remove the staging folder.
    Stage stage(archive, plan, staging, progress);
    if (ZipFault fault = stage.Run()) {
        return fault;
    }
    if (!progress.Finish()) {
        return Cancelled();
    }
    // Those that are listed, so that empty ones arrive, too; what is not listed is made with its files.
    for (const orvcore::UTF8String& directory : plan.directories) {
        if (!folder.MakeDirectory(pathOf(directory), error)) {
            return WriteFault(error).At(directory);
        }
    }
    for (std::size_t number = 0; number < plan.files.size(); ++number) {
        const UnpackPlan::File& file = plan.files[number];
        if (!folder.PutFile(stage.PathOf(number), pathOf(file.relative), ifExists, error)) {
            return WriteFault(error).At(archive.Entries()[file.index].shown.name);
        }
    }
    folder.Keep();
    return {};
}

} // namespace orvstorage::detail
