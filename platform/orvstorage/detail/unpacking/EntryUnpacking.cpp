#include <orvstorage/detail/unpacking/EntryUnpacking.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/shared/NativeFile.h>
#include <orvcore/files/shared/NewFolders.h>
#include <orvstorage/detail/reading/EntryReader.h>

#include <algorithm>

namespace orvstorage::detail {

namespace fs = std::filesystem;

namespace {

// What UnpackOver keeps between its check and its writing, so that small ones are inflated once.
constexpr std::uint64_t kMostHeld = std::uint64_t{1} << 20;

// Writes over a file that others may have open; `give` hands its content to a function, piece by piece.
template <class Give>
ZipFault WriteOver(const fs::path& destination, ByteProgress& progress, const Give& give)
{
    using orvcore::detail::NativeFile;
    std::error_code error;
    NativeFile file = NativeFile::Open(destination, NativeFile::Mode::Truncate, error);
    if (error) {
        return WriteFault(error);
    }
    std::uint64_t done = 0;
    ZipFault fault = give([&](const char* data, std::size_t size) {
        done += size;
        if (!progress.Advance(size)) {
            return Cancelled();
        }
        return file.WriteAt(done - size, data, size, error) ? ZipFault() : WriteFault(error);
    });
    if (!file.Close(error) && !fault) {
        fault = WriteFault(error);
    }
    // Too late to save what stood there, but a host that cancels is owed no new file either.
    if (!fault && !progress.Finish()) {
        fault = Cancelled();
    }
    // Half a file could be taken for the whole. What is no regular file (a pipe, a device) is not this call's to
    // remove.
    if (fault && orvcore::IsFile(destination)) {
        orvcore::RemoveOne(destination, error);
    }
    return fault;
}

} // namespace

ZipFault StreamEntry(zip_t* handle, const ArchiveEntry& entry, std::size_t index, std::vector<char>& piece,
                     const ContentWriter& write)
{
    auto reader = EntryReader::Open(handle, index, entry);
    if (!reader) {
        return reader.Fault();
    }
    for (;;) {
        auto got = reader->Read(piece.data(), piece.size());
        if (!got) {
            return got.Fault();
        }
        if (ZipFault fault = write(piece.data(), *got)) {
            return fault;
        }
        // The end, and by then the checksum has been compared. A content of just so many bytes gives one more read, of
        // none.
        if (*got < piece.size()) {
            return {};
        }
    }
}

ZipFault TestEntry(const ZipArchive& archive, std::size_t index, std::string* head)
{
    const ArchiveEntry& entry = archive.Entries()[index];
    std::vector<char> piece(
        std::min<std::uint64_t>(kUnpackedPiece, entry.shown.size + 1)); // its end shows in the same read
    const auto keep = [head](const char* data, std::size_t size) {
        if (head != nullptr) {
            head->append(data, std::min(size, kEntryHeadSize - head->size()));
        }
        return ZipFault();
    };
    return StreamEntry(archive.Handle(), entry, index, piece, keep).At(entry.shown.name);
}

ZipFault UnpackToFile(const ZipArchive& archive, std::size_t index, const fs::path& destination, ByteProgress& progress)
{
    // The caller may have cancelled before anything began: then not even the folder is made.
    const ArchiveEntry& entry = archive.Entries()[index];
    progress.Expect(entry.shown.size);
    if (!progress.MayGoOn()) {
        return Cancelled();
    }
    std::error_code error;
    orvcore::detail::NewFolders folders;
    if (destination.has_parent_path() && !folders.Make(destination.parent_path(), error)) {
        return WriteFault(error);
    }
    orvcore::AtomicFile file(destination); // gone before the folders are
    // What a killed program left here has a name that begins with a dot: no user sees it and removes it.
    file.RemoveLeftBehind();
    std::vector<char> piece(kUnpackedPiece);
    const auto write = [&](const char* data, std::size_t size) {
        if (!progress.Advance(size)) {
            return Cancelled();
        }
        return file.Write(data, size, error) ? ZipFault() : WriteFault(error);
    };
    if (ZipFault fault = StreamEntry(archive.Handle(), entry, index, piece, write)) {
        return fault;
    }
    if (!progress.Finish()) {
        return Cancelled();
    }
    // Not flushed to the disk: the archive is still there, and the file can be made of it again.
    if (!file.Commit(orvcore::AtomicFile::Durability::Cached, error)) {
        return WriteFault(error);
    }
    folders.Keep();
    return {};
}

ZipFault UnpackOver(const ZipArchive& archive, std::size_t index, const fs::path& destination, ByteProgress& progress)
{
    const ArchiveEntry& entry = archive.Entries()[index];
    progress.Expect(2 * entry.shown.size);
    if (!progress.MayGoOn()) {
        return Cancelled();
    }
    // What fits is held after the check; anything larger is read again, for what the file holds now has no copy.
    std::vector<char> piece(std::min<std::uint64_t>(kMostHeld, entry.shown.size + 1));
    const auto check = [&](const char*, std::size_t size) { return progress.Advance(size) ? ZipFault() : Cancelled(); };
    if (ZipFault fault = StreamEntry(archive.Handle(), entry, index, piece, check)) {
        return fault;
    }
    if (entry.shown.size == 0) {
        return {ZipError::EntryMissing};
    }
    return WriteOver(destination, progress, [&](const auto& write) {
        return entry.shown.size < piece.size() ? write(piece.data(), entry.shown.size)
                                               : StreamEntry(archive.Handle(), entry, index, piece, write);
    });
}

} // namespace orvstorage::detail
