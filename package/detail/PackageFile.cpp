#include <package/detail/PackageFile.h>

#include <orvcore/files/Files.h>

namespace orvcapsule::detail {

// Two archive objects, which are one for a package with a short path. `package_` is the file at the path: it is what
// changes are made in, and what remembers which version of the file this object knows. `archive_` is what is read. For
// a long path that is the private copy, and `package_` then reads its directory only, to learn the version.
//
// The two have limits and a last failure each. A host knows one archive (GetArchive), so both are carried over wherever
// one acts for the other.

namespace fs = std::filesystem;
using orvstorage::ZipFile;

PackageFile::PackageFile(const fs::path& package, orvcore::UTF8String name, orvcore::UTF8String fullPath,
                         std::string password)
    : path_(package)
    , name_(std::move(name))
    , fullPath_(std::move(fullPath))
    , password_(std::move(password))
    , workingPath_(name_)
    , package_(package, password_)
    , archive_(package_)
{
    Open();
}

void PackageFile::Open()
{
    // A package that does not exist yet has nothing to copy. It is written in its place and may then be read in place
    // as well: the file layer opens long paths, the rule only keeps work away from them.
    if (!IsLongPath(fullPath_) || !orvcore::Exists(path_)) {
        return;
    }
    // What is copied may be newer than what is seen here, never older: a change that builds on it is refused in time.
    package_.GetEntries();
    auto folder = std::make_unique<orvcore::TemporaryFolder>(kPrivateArea);
    const fs::path copy = folder->Path() / path_.filename();
    orvcore::CopyOneFile(path_, copy);
    ZipFile archive(copy, password_);
    archive.SetLimits(package_.GetLimits());
    // Only now: when the copy fails above, the exception leaves the object reading the package in its place.
    archive_ = std::move(archive);
    privateFolder_ = std::move(folder);
    workingPath_ = orvcore::PathToUTF8(copy);
}

void PackageFile::ReadInPlace()
{
    archive_ = package_;
    privateFolder_.reset();
    workingPath_ = name_;
}

bool PackageFile::Change(const std::function<bool(const ZipFile&)>& change)
{
    if (!privateFolder_) {
        return change(package_);
    }
    package_.SetLimits(archive_.GetLimits()); // a host sets them where it reads
    const bool changed = change(package_);
    archive_.SetLastFailure(package_.GetLastFailure());
    if (changed) {
        try {
            // Closes the copy first: some systems do not write over a file that is open.
            archive_.Reopen();
            orvcore::CopyOneFile(path_, orvcore::PathFromUTF8(workingPath_));
        } catch (const fs::filesystem_error&) { // the package is stored, and the old copy must not be read
            ReadInPlace();
        }
    }
    return changed;
}

void PackageFile::Reopen()
{
    package_.SetLimits(archive_.GetLimits());
    package_.Reopen();
    ReadInPlace();
    Open();
}

} // namespace orvcapsule::detail
