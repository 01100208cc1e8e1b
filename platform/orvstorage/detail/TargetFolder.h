#pragma once

#include <orvstorage/ZipFailure.h>

#include <filesystem>
#include <set>
#include <vector>

namespace orvstorage::detail {

enum class Existing;

/// The folder into which an archive is unpacked. Remembers all it creates, and takes it away again unless Keep is
/// called; what existed before is never deleted.
class TargetFolder {
public:
    explicit TargetFolder(std::filesystem::path folder);
    TargetFolder(const TargetFolder&) = delete;
    TargetFolder& operator=(const TargetFolder&) = delete;
    ~TargetFolder();

    /// Creates the folder when missing and, inside, a private one for files on their way.
    /// @return the private folder's path; `failure` tells when it could not be made.
    std::filesystem::path Open(ZipFailure& failure);
    bool MakeDirectory(const orvcore::UTF8String& relative, ZipFailure& failure);
    /// Moves a file from the private folder to its place.
    bool PutFile(const std::filesystem::path& from, const orvcore::UTF8String& relative, Existing existing,
                 ZipFailure& failure);
    void Keep() noexcept;

private:
    bool Make(const std::filesystem::path& directory, ZipFailure& failure);

    std::filesystem::path folder_;
    std::filesystem::path canonical_;
    std::filesystem::path private_;
    std::set<std::filesystem::path> known_;      // folders that are there and lead nowhere else
    std::vector<std::filesystem::path> created_; // in the order of creation
};

} // namespace orvstorage::detail
