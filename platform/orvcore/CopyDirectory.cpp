#include <orvcore/CopyDirectory.h>

#include <orvcore/Executor.h>
#include <orvcore/FileSystem.h>

#include <algorithm>
#include <memory>

namespace orvcore {

namespace fs = std::filesystem;

namespace {

class DirectoryCopy {
public:
    DirectoryCopy(fs::path from, fs::path to, IfExists ifExists, std::function<bool(double)> progress)
        : from_(std::move(from))
        , to_(std::move(to))
        , ifExists_(ifExists)
        , progress_(std::move(progress))
    {
    }

    Future<ResultCode> GetFuture() const
    {
        return promise_.GetFuture();
    }

    void Run()
    {
        bool done = false;
        try {
            Collect(from_);
            done = CopyAll();
            if (done) {
                promise_.SetValue(kResultOK);
            }
        } catch (const fs::filesystem_error&) {
            promise_.SetValue(kResultFileNotWritten);
        } catch (...) {
            promise_.SetException(std::current_exception());
        }
        if (!done) {
            std::for_each(created_.rbegin(), created_.rend(), [](const fs::path& path) {
                std::error_code ignored;
                RemoveOne(path, ignored);
            });
            promise_.Cancel();
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

    fs::path TargetOf(const fs::path& path) const
    {
        return (to_ / path.lexically_relative(from_)).lexically_normal();
    }

    bool CopyAll()
    {
        for (const fs::path& folder : folders_) {
            const fs::path target = TargetOf(folder);
            std::error_code error;
            if (MakeDirectories(target, error)) {
                created_.push_back(target);
            } else if (error) {
                throw fs::filesystem_error("cannot create folder", target, error);
            }
        }
        for (std::size_t i = 0; i < files_.size(); ++i) {
            const double fraction = static_cast<double>(i) / static_cast<double>(files_.size());
            if (promise_.IsCancelled() || (progress_ && !progress_(fraction))) {
                return false;
            }
            const fs::path target = TargetOf(files_[i]);
            const bool existed = Exists(target);
            if (!existed || ifExists_ == IfExists::Overwrite) {
                CopyOneFile(files_[i], target);
            }
            if (!existed) {
                created_.push_back(target);
            }
        }
        return !progress_ || progress_(1.0);
    }

    fs::path from_;
    fs::path to_;
    IfExists ifExists_;
    std::function<bool(double)> progress_;
    std::vector<fs::path> folders_;
    std::vector<fs::path> files_;
    std::vector<fs::path> created_;
    Promise<ResultCode> promise_;
};

} // namespace

Future<ResultCode> CopyDirectoryAsync(const fs::path& from, const fs::path& to, IfExists ifExists,
                                      std::function<bool(double)> progress)
{
    auto copy = std::make_shared<DirectoryCopy>(from, to, ifExists, std::move(progress));
    const Future<ResultCode> future = copy->GetFuture();
    // Not on the workers for computing: one of them may be the one that waits for this copy.
    // A refused task is destroyed, and the future with it is cancelled.
    static_cast<void>(GetPreTerminationExecutor()->Post([copy] { copy->Run(); }));
    return future;
}

} // namespace orvcore
