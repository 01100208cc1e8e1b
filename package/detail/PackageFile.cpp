#include <package/detail/PackageFile.h>

#include <orvcore/files/Files.h>

namespace orvcapsule::detail {

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
