#pragma once

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Progress.h>
#include <tools/zelt/support/InOrder.h>

#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace zelt {

/// The packages that a command works on, as the command line names them.
struct PackageList {
    std::vector<std::string> names; ///< files, and folders that stand for all packages below them
    std::string listFile;           ///< names further ones, each on a line; "-": standard input; empty: none
    bool isNullSeparated = false;   ///< in that file a NUL stands behind each name, and no line feed
    std::size_t jobs = 0;           ///< packages at one time; 0: as many as there are processors
    bool takesParts = false;        ///< a folder that holds a definition.json stands for itself
};

/// A file that the command line names as a whole; "-": standard input. @throws FileError
std::string ReadInput(const std::string& file);

/// @throws UsageError  when the command line names none
void NeedSome(const PackageList& list);

/// The packages, a folder's in the order of a listing. A folder that cannot be read is reported and makes `exit` a
/// failure. @throws UsageError as NeedSome; FileError  of a list that cannot be read
std::vector<std::string> FindPackages(const PackageList& list, ExitCode& exit);

/// Does `work(file)` for each package, on several threads, and `take(file, result)` on this thread, in the order of the
/// packages. What either throws is reported as an error of that file and does not stop the others.
/// @param what  shown beside the progress bar, "checking"
template <class Work, class Take>
ExitCode ForEachPackage(const PackageList& list, const std::string& what, const Work& work, const Take& take)
{
    ExitCode exit = ExitCode::kDone;
    std::vector<std::string> files;
    if (const ExitCode found = OnFile(what, [&] { files = FindPackages(list, exit); }); found != ExitCode::kDone) {
        return found;
    }
    std::vector<std::optional<decltype(work(files.front()))>> results(files.size());
    std::vector<std::exception_ptr> failures(files.size());
    Progress progress(what);
    const auto workOnOne = [&](std::size_t i) {
        try {
            results[i].emplace(work(files[i]));
        } catch (...) {
            failures[i] = std::current_exception();
        }
    };
    const auto takeOne = [&](std::size_t i) {
        progress.Clear();
        const ExitCode one = OnFile(files[i], [&] {
            if (failures[i]) {
                std::rethrow_exception(failures[i]);
            }
            take(files[i], *results[i]);
        });
        results[i].reset();
        failures[i] = nullptr;
        exit = one == ExitCode::kDone ? exit : one;
        progress.Set(static_cast<double>(i + 1) / static_cast<double>(files.size()));
    };
    DoInOrder(files.size(), list.jobs, workOnOne, takeOne);
    return exit;
}

} // namespace zelt
