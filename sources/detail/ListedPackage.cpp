#include <sources/detail/ListedPackage.h>

#include <sources/PreviewLimit.h>

#include <orvcore/files/Paths.h>

namespace orvcapsule::detail {

ListedPackage::ListedPackage(const std::filesystem::path& path)
    : path_(path)
    , fileName_(orvcore::PathToUTF16(path.filename()))
    , folder_(orvcore::PathToUTF8(path.parent_path()))
{
}

// A package that is known from the notes, with previews that are there, is never opened at all; that is what makes a
// second listing fast.
const CapsuleZip& ListedPackage::Content()
{
    if (!zip_) {
        // Nothing of a package that a listing looks at is large; what is must not fill the disk.
        orvstorage::ZipLimits limits;
        limits.maxEntrySize = kMaxPreviewBytes;
        zip_.emplace(path_).GetArchive().SetLimits(limits);
    }
    return *zip_;
}

} // namespace orvcapsule::detail
