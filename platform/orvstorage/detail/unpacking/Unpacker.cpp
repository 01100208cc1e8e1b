#include <orvstorage/detail/unpacking/Unpacker.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/shared/GuardedFolder.h>
#include <orvcore/files/shared/NewFolders.h>
#include <orvcore/tasks/ParallelFor.h>
#include <orvstorage/detail/reading/EntryReader.h>

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

constexpr std::size_t kPiece = std::size_t{256} << 10;
// What UnpackOver keeps between its check and its writing, so that small ones are inflated once.
constexpr std::uint64_t kMostHeld = std::uint64_t{1} << 20;
constexpr std::uint64_t kWorthThreads = std::uint64_t{4} << 20; // below it, opening more handles takes longer
constexpr std::size_t kMostThreads = 8;                         // more would only wait for the disk

// Hands an entry's content to `write` piece by piece, until that fails.
template <class Write>
ZipFault StreamEntry(zip_t* handle, const ArchiveEntry& entry, std::size_t index, std::vector<char>& piece,
                     const Write& write)
{
    auto reader = EntryReader::Open(handle, index, entry);
    if (!reader) {
        return reader.Fault();
    }
    for (;;) {
        auto got = reader->Read(piece.data(), piece.size());
        if (!got) {
            return got.Fault();
        }
        if (ZipFault fault = write(piece.data(), *got)) {
            return fault;
        }
        // The end, and by then the checksum has been compared. A content of just so many bytes gives one more read, of
        // none.
        if (*got < piece.size()) {
            return {};
        }
    }
}

// A host that cancels means the whole call.
ZipFault Cancelled()
{
    return ZipFault{ZipError::Cancelled}.At({});
}

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
        std::vector<char> piece(kPiece);
        for (;;) {
            const std::size_t turn = next_.fetch_add(1);
            if (turn >= order_.size() || stopped_) {
                return;
            }
            const std::size_t number = order_[turn];
            ZipFault fault = UnpackOne(handle, number, piece);
            if (fault && fault.error != ZipError::Cancelled) { // whoever stopped the work has reported why
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
    // or a handle that cannot be had, is told as the first file's, and so before any other. Whoever sees `stopped_`
    // ends without a fault of its own.
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

// Writes over a file that others may have open; `give` hands its content to a function, piece by piece.
template <class Give>
ZipFault WriteOver(const fs::path& destination, ByteProgress& progress, const Give& give)
{
    using orvcore::detail::NativeFile;
    std::error_code error;
    NativeFile file = NativeFile::Open(destination, NativeFile::Mode::Truncate, error);
    if (error) {
        return WriteFault(error);
    }
    std::uint64_t done = 0;
    ZipFault fault = give([&](const char* data, std::size_t size) {
        done += size;
        if (!progress.Advance(size)) {
            return Cancelled();
        }
        return file.WriteAt(done - size, data, size, error) ? ZipFault() : WriteFault(error);
    });
    if (!file.Close(error) && !fault) {
        fault = WriteFault(error);
    }
    // Too late to save what stood there, but a host that cancels is owed no new file either.
    if (!fault && !progress.Finish()) {
        fault = Cancelled();
    }
    // Half a file could be taken for the whole. What is no regular file (a pipe, a device) is not this call's to
    // remove.
    if (fault && orvcore::IsFile(destination)) {
        orvcore::RemoveOne(destination, error);
    }
    return fault;
}

} // namespace

ZipFault TestEntry(const ZipArchive& archive, std::size_t index, std::string* head)
{
    const ArchiveEntry& entry = archive.Entries()[index];
    std::vector<char> piece(std::min<std::uint64_t>(kPiece, entry.shown.size + 1)); // its end shows in the same read
    const auto keep = [head](const char* data, std::size_t size) {
        if (head != nullptr) {
            head->append(data, std::min(size, kEntryHeadSize - head->size()));
        }
        return ZipFault();
    };
    return StreamEntry(archive.Handle(), entry, index, piece, keep).At(entry.shown.name);
}

ZipFault UnpackToFile(const ZipArchive& archive, std::size_t index, const fs::path& destination, ByteProgress& progress)
{
    // The caller may have cancelled before anything began: then not even the folder is made.
    const ArchiveEntry& entry = archive.Entries()[index];
    progress.Expect(entry.shown.size);
    if (!progress.MayGoOn()) {
        return Cancelled();
    }
    std::error_code error;
    orvcore::detail::NewFolders folders;
    if (destination.has_parent_path() && !folders.Make(destination.parent_path(), error)) {
        return WriteFault(error);
    }
    orvcore::AtomicFile file(destination); // gone before the folders are
    // What a killed program left here has a name that begins with a dot: no user sees it and removes it.
    file.RemoveLeftBehind();
    std::vector<char> piece(kPiece);
    const auto write = [&](const char* data, std::size_t size) {
        if (!progress.Advance(size)) {
            return Cancelled();
        }
        return file.Write(data, size, error) ? ZipFault() : WriteFault(error);
    };
    if (ZipFault fault = StreamEntry(archive.Handle(), entry, index, piece, write)) {
        return fault;
    }
    if (!progress.Finish()) {
        return Cancelled();
    }
    // Not flushed to the disk: the archive is still there, and the file can be made of it again.
    if (!file.Commit(orvcore::AtomicFile::Durability::Cached, error)) {
        return WriteFault(error);
    }
    folders.Keep();
    return {};
}

ZipFault UnpackOver(const ZipArchive& archive, std::size_t index, const fs::path& destination, ByteProgress& progress)
{
    const ArchiveEntry& entry = archive.Entries()[index];
    progress.Expect(2 * entry.shown.size);
    if (!progress.MayGoOn()) {
        return Cancelled();
    }
    // What fits is held after the check; anything larger is read again, for what the file holds now has no copy.
    std::vector<char> piece(std::min<std::uint64_t>(kMostHeld, entry.shown.size + 1));
    const auto check = [&](const char*, std::size_t size) { return progress.Advance(size) ? ZipFault() : Cancelled(); };
    if (ZipFault fault = StreamEntry(archive.Handle(), entry, index, piece, check)) {
        return fault;
    }
    if (entry.shown.size == 0) {
        return {ZipError::EntryMissing};
    }
    return WriteOver(destination, progress, [&](const auto& write) {
        return entry.shown.size < piece.size() ? write(piece.data(), entry.shown.size)
                                               : StreamEntry(archive.Handle(), entry, index, piece, write);
    });
}

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
