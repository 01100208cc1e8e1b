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

namespace orvstorage::detail {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kPiece = std::size_t{256} << 10;
constexpr std::uint64_t kMostHeld = std::uint64_t{1} << 20;
constexpr std::uint64_t kWorthThreads = std::uint64_t{4} << 20;
constexpr std::size_t kMostThreads = 8; // more would only wait for the disk

// Hands an entry's content to `write` piece by piece, until that returns false. False, too, with the reason in
// `failure`, when it cannot be read.
template <class Write>
bool StreamEntry(zip_t* handle, const ArchiveEntry& entry, std::size_t index, std::vector<char>& piece,
                 ZipFailure& failure, const Write& write)
{
    auto reader = EntryReader::Open(handle, index, entry);
    if (!reader) {
        return reader.Fault().Tell(failure);
    }
    for (;;) {
        auto got = (*reader).Read(piece.data(), piece.size());
        if (!got) {
            return got.Fault().Tell(failure);
        }
        if (!write(piece.data(), *got)) {
            return false;
        }
        if (*got < piece.size()) {
            return true;
        }
    }
}

// A host that cancels means the whole call.
bool Cancelled(ZipFailure& failure)
{
    failure.error = ZipError::Cancelled;
    failure.entry.clear();
    return false;
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

    bool Run(ZipFailure& failure)
    {
        blank_ = failure;
        first_ = failure;
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
                    ZipFailure opening = blank_;
                    handle.Fault().Tell(opening);
                    Report(0, opening);
                }
            };
            orvcore::ParallelFor(threads, 1, piece, [this] { HeedCaller(progress_.Ask()); });
        }
        failure = first_;
        return !failure;
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
            ZipFailure failure = blank_;
            Cancelled(failure);
            Report(0, failure);
        }
    }

    void Count(std::size_t bytes)
    {
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
            ZipFailure failure = blank_;
            if (!UnpackOne(handle, number, piece, failure)) {
                Report(number, failure);
            }
        }
    }

    bool UnpackOne(zip_t* handle, std::size_t number, std::vector<char>& piece, ZipFailure& failure)
    {
        const std::size_t index = plan_.files[number].index;
        const ArchiveEntry& entry = archive_.Entries()[index];
        failure.entry = entry.shown.name;
        using orvcore::detail::NativeFile;
        std::error_code error;
        NativeFile file = NativeFile::Open(PathOf(number), NativeFile::Mode::CreateNew, error);
        std::uint64_t done = 0;
        const auto write = [&](const char* data, std::size_t size) {
            const bool written = !stopped_ && file.WriteAt(done, data, size, error);
            done += size;
            Count(size);
            return written;
        };
        const bool whole = !error && StreamEntry(handle, entry, index, piece, failure, write) && file.Close(error);
        if (error) {
            TranslateWriteError(error, failure);
        }
        return whole && !failure;
    }

    void Report(std::size_t number, const ZipFailure& failure)
    {
        const std::lock_guard lock(mutex_);
        if (failure && number < firstNumber_) {
            first_ = failure;
            firstNumber_ = number;
        }
        stopped_ = true;
    }

    const ZipArchive& archive_;
    const UnpackPlan& plan_;
    const fs::path& folder_;
    ByteProgress& progress_;
    const std::thread::id caller_ = std::this_thread::get_id();
    ZipFailure blank_;
    std::vector<std::size_t> order_; // of the plan's files
    std::atomic<std::size_t> next_ = 0;
    std::atomic<bool> stopped_ = false;
    std::mutex mutex_;
    ZipFailure first_;
    std::size_t firstNumber_ = static_cast<std::size_t>(-1);
};

// Writes over a file that others may have open; `give` hands its content to a function, piece by piece.
template <class Give>
bool WriteOver(const fs::path& destination, ZipFailure& failure, const Give& give)
{
    using orvcore::detail::NativeFile;
    std::error_code error;
    NativeFile file = NativeFile::Open(destination, NativeFile::Mode::Truncate, error);
    if (error) {
        TranslateWriteError(error, failure);
        return false;
    }
    std::uint64_t done = 0;
    const bool given = give([&](const char* data, std::size_t size) {
        done += size;
        return file.WriteAt(done - size, data, size, error);
    });
    std::error_code closing;
    const bool whole = file.Close(closing) && given;
    if (error || closing) {
        TranslateWriteError(error ? error : closing, failure);
    }
    if (!whole && orvcore::IsFile(destination)) {
        orvcore::RemoveTree(destination);
    }
    return whole;
}

} // namespace

bool TestEntry(const ZipArchive& archive, std::size_t index, ZipFailure& failure, std::string* head)
{
    const ArchiveEntry& entry = archive.Entries()[index];
    failure.entry = entry.shown.name;
    std::vector<char> piece(std::min<std::uint64_t>(kPiece, entry.shown.size + 1)); // its end shows in the same read
    const auto keep = [head](const char* data, std::size_t size) {
        if (head != nullptr) {
            head->append(data, std::min(size, kEntryHeadSize - head->size()));
        }
        return true;
    };
    return StreamEntry(archive.Handle(), entry, index, piece, failure, keep);
}

bool UnpackToFile(const ZipArchive& archive, std::size_t index, const fs::path& destination, ByteProgress& progress,
                  ZipFailure& failure)
{
    if (!progress.MayGoOn()) {
        return Cancelled(failure);
    }
    std::error_code error;
    orvcore::detail::NewFolders folders;
    if (destination.has_parent_path()) {
        folders.Make(destination.parent_path(), error);
    }
    orvcore::AtomicFile file(destination); // gone before the folders are
    file.RemoveLeftBehind();
    std::vector<char> piece(kPiece);
    bool goesOn = true;
    const auto write = [&](const char* data, std::size_t size) {
        goesOn = progress.Advance(size);
        return goesOn && file.Write(data, size, error);
    };
    const bool read = !error && StreamEntry(archive.Handle(), archive.Entries()[index], index, piece, failure, write);
    if (!goesOn || (read && !progress.Finish())) {
        return Cancelled(failure);
    }
    const bool whole = read && file.Commit(orvcore::AtomicFile::Durability::Cached, error);
    if (error) {
        TranslateWriteError(error, failure);
    }
    if (whole) {
        folders.Keep();
    }
    return whole;
}

bool UnpackOver(const ZipArchive& archive, std::size_t index, const fs::path& destination, ZipFailure& failure)
{
    const ArchiveEntry& entry = archive.Entries()[index];
    // What fits is held after the check; anything larger is read again, for what the file holds now has no copy.
    std::vector<char> piece(std::min<std::uint64_t>(kMostHeld, entry.shown.size + 1));
    const auto skip = [](const char*, std::size_t) { return true; };
    if (!StreamEntry(archive.Handle(), entry, index, piece, failure, skip)) {
        return false;
    }
    if (entry.shown.size == 0) {
        failure.error = ZipError::EntryMissing;
        return false;
    }
    return WriteOver(destination, failure, [&](const auto& write) {
        return entry.shown.size < piece.size() ? write(piece.data(), entry.shown.size)
                                               : StreamEntry(archive.Handle(), entry, index, piece, failure, write);
    });
}

bool Unpack(const ZipArchive& archive, const UnpackPlan& plan, const fs::path& target, orvcore::IfExists ifExists,
            ByteProgress& progress, ZipFailure& failure)
{
    if (!progress.MayGoOn()) {
        return Cancelled(failure);
    }
    const auto pathOf = [](const orvcore::UTF8String& relative) {
        return orvcore::PathFromUTF8(relative).make_preferred();
    };
    std::error_code error;
    orvcore::detail::GuardedFolder folder(target);
    const fs::path staging = folder.Open(error);
    if (error) {
        failure.folder = target;
        TranslateWriteError(error, failure);
        return false;
    }
    Stage stage(archive, plan, staging, progress);
    if (!stage.Run(failure)) {
        return false;
    }
    if (!progress.Finish()) {
        return Cancelled(failure);
    }
    for (const orvcore::UTF8String& directory : plan.directories) {
        if (!folder.MakeDirectory(pathOf(directory), error)) {
            failure.entry = directory;
            TranslateWriteError(error, failure);
            return false;
        }
    }
    for (std::size_t number = 0; number < plan.files.size(); ++number) {
        if (!folder.PutFile(stage.PathOf(number), pathOf(plan.files[number].relative), ifExists, error)) {
            failure.entry = archive.Entries()[plan.files[number].index].shown.name;
            TranslateWriteError(error, failure);
            return false;
        }
    }
    folder.Keep();
    return true;
}

} // namespace orvstorage::detail
