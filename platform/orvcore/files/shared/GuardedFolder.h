#pragma once

#include <orvcore/files/Files.h>

#include <filesystem>
#include <set>
#include <system_error>
#include <vector>

namespace orvcore::detail {

/// A folder into which many files are put, and none out of it: a link below it, left there by someone else, must not
/// lead one elsewhere. Remembers all it creates, and takes it away again unless Keep is called; what existed before is
/// never deleted. Relative paths hold no "..". Failures are put into the `error` of a call, which is otherwise cleared.
class GuardedFolder {
public:
    explicit GuardedFolder(std::filesystem::path folder);
    GuardedFolder(const GuardedFolder&) = delete;
    GuardedFolder& operator=(const GuardedFolder&) = delete;
    ~GuardedFolder();

    /// Creates the folder and its parents where missing and, inside, a private one for files on their way.
    /// @return the private folder's path
    std::filesystem::path Open(std::error_code& error);
    /// Creates the folder `relative` and its parents where missing.
    bool MakeDirectory(const std::filesystem::path& relative, std::error_code& error);
    /// Whether anything stands at `relative`.
    bool Has(const std::filesystem::path& relative) const;
    /// Moves a file from the private folder to its place.
    bool PutFile(const std::filesystem::path& from, const std::filesystem::path& relative, IfExists ifExists,
                 std::error_code& error);
    void Keep() noexcept;

private:
    bool Make(const std::filesystem::path& directory, std::error_code& error);

    std::filesystem::path folder_;
    std::filesystem::path canonical_;
    std::filesystem::path private_;
    std::set<std::filesystem::path> known_;      // folders that are there and lead nowhere else
    std::vector<std::filesystem::path> created_; // in the order of creation
};

} // namespace orvcore::detail
