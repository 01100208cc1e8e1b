#include <orvcore/files/shared/CopyDirectory.h>

#include <orvcore/files/WalkTree.h>
#include <orvcore/files/detail/FilePieces.h>
#include <orvcore/files/shared/GuardedFolder.h>
#include <orvcore/tasks/Executor.h>

#include <memory>
#include <string>

// A copy of a folder obeys the same rules as unpacking (GuardedFolder): each file is written under a number in a
// private folder inside the target, then moved to its place; a failure takes back all steps. It differs in one thing:
// each file goes to its place as soon as it is copied, not when all are.

namespace orvcore {

namespace fs = std::filesystem;

namespace {

using GoOn = std::function<bool(double fraction)>;

class DirectoryCopy {
public:
    DirectoryCopy(const fs::path& from, const fs::path& to, IfExists ifExists, const GoOn& progress,
                  CopyFailure& failure)
        : from_(from)
        , to_(to)
        , ifExists_(ifExists)
        , progress_(progress)
        , failure_(failure)
    {
    }

    // What was created is gone again when this returns anything else than kResultOK, or when `progress` throws: the
    // target's destructor takes back all steps unless Keep was called.
    ResultCode Run()
    {
        if (!Collect()) {
            return kResultFileNotWritten;
        }
        detail::GuardedFolder target(to_);
        std::error_code error;
        const fs::path staging = target.Open(error);
        if (error) {
            return Failed({}, error);
        }
        for (std::size_t i = 0; i < files_.size(); ++i) {
            if (!CopyOne(files_[i], target, staging / std::to_string(i), error)) {
                return cancelled_ ? kFutureCancelled : Failed(files_[i], error);
            }
        }
        for (const fs::path& folder : folders_) { // those without files are missing still
            if (!target.MakeDirectory(folder, error)) {
                return Failed(folder, error);
            }
        }
        if (!GoesOn(1.0)) {
            return kFutureCancelled;
        }
        target.Keep();
        return kResultOK;
    }

private:
    // All that the source holds; false when a folder of it cannot be read. The list first, then the copying: progress
    // needs the total, and what this copy makes in a target inside the source is not copied in turn.
    bool Collect()
    {
        const fs::path base = WithoutClosingSeparators(from_);
        const auto relative = [&](const fs::path& path) { return path.lexically_relative(base); };
        TreeVisitor visitor;
        visitor.visit = [&](const fs::path& path, FileKind kind) {
            if (kind == FileKind::Directory) {
                folders_.push_back(relative(path));
            } else if (kind != FileKind::Link) {
                // A device or a pipe, too: reading it fails, and with it the copy. Left out silently it would be
                // missing.
                std::error_code unknown; // told when the file is read
                total_ += InspectPath(path, unknown).size;
                files_.push_back(relative(path));
            }
            return WalkNext::GoOn;
        };
        visitor.fail = [&](const fs::path& folder, const std::error_code& error) {
            Failed(folder == base ? fs::path() : relative(folder), error);
            return WalkNext::End;
        };
        return WalkTree(base, visitor);
    }

    bool CopyOne(const fs::path& relative, detail::GuardedFolder& target, const fs::path& half, std::error_code& error)
    {
        if (relative.has_parent_path() && !target.MakeDirectory(relative.parent_path(), error)) {
            return false;
        }
        // PutFile would keep it as well, but only when all of the content has been copied.
        if (ifExists_ == IfExists::Keep && target.Has(relative)) {
            return true;
        }
        return CopyContent(from_ / relative, half, error) && target.PutFile(half, relative, ifExists_, error);
    }

    bool CopyContent(const fs::path& from, const fs::path& to, std::error_code& error)
    {
        using detail::NativeFile;
        NativeFile file = NativeFile::Open(to, NativeFile::Mode::CreateNew, error);
        if (error) {
            return false;
        }
        file.CopyPermissions(from);
        std::uint64_t done = 0;
        const auto write = [&](const char* data, std::size_t size) {
            const bool written = file.WriteAt(done, data, size, error);
            done += size;
            done_ += size;
            return written &&
                   GoesOn(total_ == 0 ? 0.0 : std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_)));
        };
        return detail::ReadPieces(from, write, error) && file.Close(error);
    }

    bool GoesOn(double fraction)
    {
        cancelled_ = progress_ && !progress_(fraction);
        return !cancelled_;
    }

    ResultCode Failed(const fs::path& relative, const std::error_code& error)
    {
        failure_ = {relative, error};
        return kResultFileNotWritten;
    }

    const fs::path& from_;
    const fs::path& to_;
    const IfExists ifExists_;
    const GoOn& progress_;
    CopyFailure& failure_;
    std::vector<fs::path> folders_; // relative, each before those in it
    std::vector<fs::path> files_;   // relative
    std::uint64_t total_ = 0;       // bytes
    std::uint64_t done_ = 0;
    bool cancelled_ = false;
};

} // namespace

ResultCode CopyDirectory(const fs::path& from, const fs::path& to, IfExists ifExists, const GoOn& progress,
                         CopyFailure& failure)
{
    return DirectoryCopy(from, to, ifExists, progress, failure).Run();
}

Future<ResultCode> CopyDirectoryAsync(const fs::path& from, const fs::path& to, IfExists ifExists, GoOn progress,
                                      std::shared_ptr<CopyFailure> failure)
{
    const auto promise = std::make_shared<Promise<ResultCode>>();
    const auto told = failure ? std::move(failure) : std::make_shared<CopyFailure>();
    const auto copy = [=] {
        try {
            const GoOn goesOn = [&](double fraction) {
                return !promise->IsCancelled() && (!progress || progress(fraction));
            };
            const ResultCode result = CopyDirectory(from, to, ifExists, goesOn, *told);
            result == kFutureCancelled ? promise->Cancel() : promise->SetValue(result);
        } catch (...) {
            promise->SetException(std::current_exception());
        }
    };
    Future<ResultCode> future = promise->GetFuture();
    // On the pre-termination executor, one copy after the other: copies at the same time would only share the disk, and
    // exit does not wait for them. A refused task is destroyed, and with it the promise, which cancels the future.
    static_cast<void>(GetPreTerminationExecutor()->Post(copy));
    return future;
}

} // namespace orvcore
