#include <orvcore/files/shared/CopyDirectory.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/shared/GuardedFolder.h>
#include <orvcore/tasks/Executor.h>

#include <memory>
#include <string>

namespace orvcore {

namespace fs = std::filesystem;

namespace {

class DirectoryCopy {
public:
    DirectoryCopy(fs::path from, fs::path to, IfExists ifExists, std::function<bool(double)> progress,
                  std::shared_ptr<CopyFailure> failure)
        : from_(std::move(from))
        , to_(std::move(to))
        , ifExists_(ifExists)
        , progress_(std::move(progress))
        , failure_(failure ? std::move(failure) : std::make_shared<CopyFailure>())
    {
    }

    Future<ResultCode> GetFuture() const
    {
        return promise_.GetFuture();
    }

    void Run()
    {
        try {
            Collect(from_);
            const ResultCode result = CopyAll();
            result == kFutureCancelled ? promise_.Cancel() : promise_.SetValue(result);
        } catch (...) {
            promise_.SetException(std::current_exception());
        }
    }

private:
    void Collect(const fs::path& folder)
    {
        folders_.push_back(folder);
        const DirectoryListing listing = ListDirectory(folder);
        for (const fs::path& file : listing.files) {
            std::error_code ignored;
            if (InspectPath(file, ignored).kind != FileKind::Link) {
                files_.push_back(file);
            }
        }
        for (const fs::path& directory : listing.directories) {
            Collect(directory);
        }
    }

    // What was created is gone again when this returns, so that the future's reader finds it so.
    ResultCode CopyAll()
    {
        detail::GuardedFolder target(to_);
        std::error_code error;
        const fs::path staging = target.Open(error);
        if (error) {
            return Failed({}, error);
        }
        for (std::size_t i = 0; i < files_.size(); ++i) {
            if (promise_.IsCancelled() || !GoesOn(static_cast<double>(i) / static_cast<double>(files_.size()))) {
                return kFutureCancelled;
            }
            const fs::path relative = files_[i].lexically_relative(from_);
            if (!CopyOne(files_[i], target, relative, staging / std::to_string(i), error)) {
                return Failed(relative, error);
            }
        }
        for (std::size_t i = 1; i < folders_.size(); ++i) {
            const fs::path relative = folders_[i].lexically_relative(from_);
            if (!target.MakeDirectory(relative, error)) {
                return Failed(relative, error);
            }
        }
        if (!GoesOn(1.0)) {
            return kFutureCancelled;
        }
        target.Keep();
        return kResultOK;
    }

    bool CopyOne(const fs::path& file, detail::GuardedFolder& target, const fs::path& relative, const fs::path& half,
                 std::error_code& error) const
    {
        if (relative.has_parent_path() && !target.MakeDirectory(relative.parent_path(), error)) {
            return false;
        }
        if (ifExists_ == IfExists::Keep && target.Has(relative)) {
            return true;
        }
        CopyToNewFile(file, half, error);
        return !error && target.PutFile(half, relative, ifExists_, error);
    }

    bool GoesOn(double fraction) const
    {
        return !progress_ || progress_(fraction);
    }

    ResultCode Failed(const fs::path& relative, const std::error_code& error)
    {
        *failure_ = {relative, error};
        return kResultFileNotWritten;
    }

    fs::path from_;
    fs::path to_;
    IfExists ifExists_;
    std::function<bool(double)> progress_;
    std::shared_ptr<CopyFailure> failure_;
    std::vector<fs::path> folders_; // the first is from_ itself
    std::vector<fs::path> files_;
    Promise<ResultCode> promise_;
};

} // namespace

Future<ResultCode> CopyDirectoryAsync(const fs::path& from, const fs::path& to, IfExists ifExists,
                                      std::function<bool(double)> progress, std::shared_ptr<CopyFailure> failure)
{
    auto copy = std::make_shared<DirectoryCopy>(from, to, ifExists, std::move(progress), std::move(failure));
    Future<ResultCode> future = copy->GetFuture();
    // Not on the workers for computing: one of them may be the one that waits for this copy.
    // A refused task is destroyed, and the future with it is cancelled.
    static_cast<void>(GetPreTerminationExecutor()->Post([copy] { copy->Run(); }));
    return future;
}

} // namespace orvcore
