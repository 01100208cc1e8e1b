// Feeds arbitrary bytes to the archive reader as a package: opening, listing, checking, reading and unpacking. Closes
// the gap that tables of hostile archives leave: the combinations nobody thought of.
#include <orvcore/files/Files.h>
#include <orvcore/files/TemporaryFolder.h>
#include <orvstorage/ZipFile.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

const std::filesystem::path& Folder()
{
    static const orvcore::TemporaryFolder folder(u8"orvcapsule-fuzz");
    return folder.Path();
}

// Whatever the archive says, nothing may appear beside the folder it was unpacked into.
void CheckNothingEscaped()
{
    const orvcore::DirectoryListing listing = orvcore::ListDirectory(Folder());
    if (listing.files.size() > 1 || listing.directories.size() > 1) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::filesystem::path package = Folder() / "package.zelt";
    orvcore::WriteBufferToFile(package, data, size);
    orvstorage::ZipFile zip(package);
    zip.SetLimits({.maxEntries = 1000,
                   .maxEntrySize = std::uint64_t{16} << 20,
                   .maxItemSize = std::uint64_t{16} << 20,
                   .maxTotalSize = std::uint64_t{32} << 20});
    for (const orvstorage::ZipFailure& failure : zip.Check(true)) {
        failure.Message();
    }
    for (const orvstorage::ZipEntry& entry : zip.GetEntries()) {
        zip.UnzipItem(entry.name);
    }
    zip.UnZip(Folder() / "out", true);
    CheckNothingEscaped();
    orvcore::RemoveTree(Folder() / "out");
    return 0;
}
