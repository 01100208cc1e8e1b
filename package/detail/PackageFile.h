#pragma once

#include <orvstorage/ZipFile.h>
#include <package/detail/ShortPath.h>

#include <functional>
#include <memory>

namespace orvcapsule::detail {

/// A package's archive. When the package's path is long, it is read through a private copy. Changes are always made in
/// the package itself: the file layer takes paths of any length, so a change can fail in one way only, and later reads
/// see what the package holds.
/// All copies of a CapsuleZip share one object, and one thread at a time uses them; so nothing here is locked.
class PackageFile {
public:
    /// @param name the path as it was given, `fullPath` the one whose length counts
    /// Throws `std::filesystem::filesystem_error` when a private copy cannot be made.
    PackageFile(const std::filesystem::path& package, orvcore::UTF8String name, orvcore::UTF8String fullPath,
                std::string password);

    const orvcore::UTF8String& PackagePath() const
    {
        return name_;
    }
    const orvcore::UTF8String& WorkingPath() const
    {
        return workingPath_;
    }
    /// What is read.
    orvstorage::ZipFile& Archive()
    {
        return archive_;
    }

    /// Runs `change` on the package, and passes its result on.
    bool Change(const std::function<bool(const orvstorage::ZipFile& package)>& change);
    /// Forgets what has been read. Throws as the constructor does; the package is then read in its place.
    void Reopen();

private:
    void Open();
    void ReadInPlace();

    std::filesystem::path path_;
    orvcore::UTF8String name_;
    // Kept for Reopen: a relative path that was made full a second time would follow the process's working folder, and
    // another rule might hold for the same package.
    orvcore::UTF8String fullPath_;
    std::string password_;
    orvcore::UTF8String workingPath_;
    orvstorage::ZipFile package_;
    std::unique_ptr<const orvcore::TemporaryFolder> privateFolder_; // outlives the archive that is open in it
    orvstorage::ZipFile archive_;                                   // the package, or its private copy
};

} // namespace orvcapsule::detail
