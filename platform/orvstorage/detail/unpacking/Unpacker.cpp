#include <orvstorage/detail/unpacking/Unpacker.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/shared/GuardedFolder.h>
#include <orvcore/tasks/ParallelFor.h>
#include <orvstorage/detail/reading/EntryReader.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <numeric>

namespace orvstorage::detail {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kPiece = std::size_t{256} << 10;
constexpr std::uint64_t kWorthThreads = std::uint64_t{4} << 20;
constexpr std::size_t kMostThreads = 8; // more would only wait for the disk

// Hands an entry's content to `write` piece by piece; its false means that `failure` is set.
template <class Write>
bool StreamEntry(zip_t* handle, const ArchiveEntry& entry, std::size_t index, std::vector<char>& piece,
                 ZipFailure& failure, const Write& write)
{
    EntryReader reader(handle, index, entry, failure);
    std::size_t got = 0;
    do {
        got = failure ? 0 : reader.Read(piece.data(), piece.size(), failure);
        if (failure || !write(piece.data(), got)) {
            return false;
        }
    } while (got == piece.size());
    return true;
}

// Unpacks the plan's files into numbered files of a private folder, on several threads where there is enough to do.
class Stage {
public:
    Stage(const ZipArchive& archive, const UnpackPlan& plan, const fs::path& folder, const fs::path& archivePath)
        : archive_(archive)
        , plan_(plan)
        , folder_(folder)
        , archivePath_(archivePath)
    {
    }

    fs::path PathOf(std::size_t number) const
    {
        return folder_ / std::to_string(number);
    }

    bool Run(ZipFailure& failure)
    {
        first_ = failure;
        Arrange();
        const std::size_t threads = total_ < kWorthThreads ? 1 : std::min(order_.size(), kMostThreads);
        if (threads <= 1) {
            Work(archive_.Handle());
        } else {
            // Each piece takes files until none is left, so it does not matter how many really run at one time.
            orvcore::ParallelFor(threads, 1, [this](std::size_t, std::size_t) {
                ZipFailure opening{ZipError::None, ZipAction::Unpack, archivePath_, {}, {}};
                const ArchiveHandle handle = archive_.NewHandle(opening);
                if (handle) {
                    Work(handle.get());
                } else {
                    Report(0, opening);
                }
            });
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
        for (const std::size_t number : order_) {
            total_ += sizeOf(number);
        }
    }

    void Work(zip_t* handle)
    {
        const ZipFailure blank{ZipError::None, ZipAction::Unpack, archivePath_, {}, {}};
        std::vector<char> piece(kPiece);
        for (;;) {
            const std::size_t turn = next_.fetch_add(1);
            if (turn >= order_.size() || stopped_) {
                return;
            }
            const std::size_t number = order_[turn];
            ZipFailure failure = blank;
            if (!UnpackOne(handle, number, piece, failure)) {
                Report(number, failure);
            }
        }
    }

    bool UnpackOne(zip_t* handle, std::size_t number, std::vector<char>& piece, ZipFailure& failure) const
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
    const fs::path archivePath_;
    std::vector<std::size_t> order_; // of the plan's files
    std::uint64_t total_ = 0;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<bool> stopped_ = false;
    std::mutex mutex_;
    ZipFailure first_;
    std::size_t firstNumber_ = static_cast<std::size_t>(-1);
};

} // namespace

bool TestEntry(const ZipArchive& archive, std::size_t index, ZipFailure& failure)
{
    const ArchiveEntry& entry = archive.Entries()[index];
    failure.entry = entry.shown.name;
    std::vector<char> piece(kPiece);
    return StreamEntry(archive.Handle(), entry, index, piece, failure, [](const char*, std::size_t) { return true; });
}

bool UnpackToFile(const ZipArchive& archive, std::size_t index, const fs::path& destination, ZipFailure& failure)
{
    std::error_code error;
    const fs::path folder = destination.parent_path();
    if (!folder.empty()) {
        orvcore::MakeDirectories(folder, error);
    }
    orvcore::AtomicFile file(destination);
    std::vector<char> piece(kPiece);
    const auto write = [&](const char* data, std::size_t size) { return file.Write(data, size, error); };
    const bool whole = !error &&
                       StreamEntry(archive.Handle(), archive.Entries()[index], index, piece, failure, write) &&
                       file.Commit(orvcore::AtomicFile::Durability::Cached, error);
    if (error) {
        TranslateWriteError(error, failure);
    }
    return whole;
}

bool Unpack(const ZipArchive& archive, const UnpackPlan& plan, const fs::path& target, orvcore::IfExists ifExists,
            ZipFailure& failure)
{
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
    Stage stage(archive, plan, staging, failure.archive);
    if (!stage.Run(failure)) {
        return false;
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
