#include <orvstorage/detail/packing/Packer.h>

#include <orvcore/files/Files.h>
#include <orvcore/text/shared/ASCII.h>
#include <orvstorage/detail/reading/ArchiveSource.h>

#include <algorithm>
#include <array>
#include <numeric>

namespace orvstorage::detail {

namespace {

// Attributes are the same whatever the file's own are: rights and owners on the packer's machine mean nothing on
// another.
constexpr std::uint32_t kPlainFile = 0100644U << 16; // a Unix regular file that all may read
// Deflating these again costs time and gains nothing. The choice goes by the name alone, not by what the content would
// gain: it is part of what makes packing repeatable, and a new line here changes the bytes of archives that hold such
// files.
constexpr std::array<std::u8string_view, 27> kPackedAlready = {
    u8".7z",  u8".aac", u8".avif", u8".bz2",  u8".docx", u8".flac", u8".gif", u8".gz",   u8".heic",
    u8".jpg", u8".jxl", u8".lz4",  u8".jpeg", u8".m4a",  u8".m4v",  u8".mkv", u8".mov",  u8".mp3",
    u8".mp4", u8".ogg", u8".opus", u8".png",  u8".webm", u8".webp", u8".xz",  u8".zelt", u8".zip"};

bool IsPackedAlready(const orvcore::UTF8String& name)
{
    orvcore::UTF8String extension = name.substr(std::min(name.rfind(u8'.'), name.size()));
    std::transform(extension.begin(), extension.end(), extension.begin(), &orvcore::ToASCIILower<char8_t>);
    return std::find(kPackedAlready.begin(), kPackedAlready.end(), extension) != kPackedAlready.end();
}

ItemForm FormOf(const PackItem& item)
{
    return item.size == 0 || IsPackedAlready(item.name) ? ItemForm::Plain : ItemForm::Deflated;
}

bool Describe(zip_t* archive, zip_uint64_t index, const PackItem& item, const std::string& password)
{
    const zip_int32_t method = FormOf(item) == ItemForm::Plain ? ZIP_CM_STORE : ZIP_CM_DEFLATE;
    return zip_set_file_compression(archive, index, method, 0) == 0 &&
           zip_file_set_dostime(archive, index, item.dosTime, item.dosDate, 0) == 0 &&
           zip_file_set_external_attributes(archive, index, 0, ZIP_OPSYS_UNIX, kPlainFile) == 0 &&
           (password.empty() || zip_file_set_encryption(archive, index, ZIP_EM_AES_256, password.c_str()) == 0);
}

// Dates and owners that other programs keep of the old content: they read them before the date that is set here.
bool DropOldFields(zip_t* archive, zip_uint64_t index)
{
    constexpr std::array<zip_uint16_t, 3> kFields = {0x5455, 0x5855, 0x000a}; // two of Unix, one of NTFS
    return std::all_of(kFields.begin(), kFields.end(), [&](zip_uint16_t field) {
        return zip_file_extra_field_delete_by_id(archive, index, field, ZIP_EXTRA_FIELD_ALL,
                                                 ZIP_FL_LOCAL | ZIP_FL_CENTRAL) == 0;
    });
}

// Only notes what is to be written: the zip library reads the files when the archive is closed.
bool Put(zip_t* archive, std::optional<std::size_t> replaced, const PackItem& item, const std::string& password,
         ByteProgress& progress)
{
    // From here on `false` leaves the reason in the handle, where the caller looks for it.
    if (replaced && !DropOldFields(archive, *replaced)) {
        return false;
    }
    zip_source_t* source = MakeItemSource(item, FormOf(item), progress);
    if (source == nullptr) {
        zip_error_set(zip_get_error(archive), ZIP_ER_MEMORY, 0);
        return false;
    }
    const auto* name = reinterpret_cast<const char*>(item.name.c_str());
    const zip_int64_t index =
        replaced ? (zip_file_replace(archive, *replaced, source, 0) == 0 ? static_cast<zip_int64_t>(*replaced) : -1)
                 : zip_file_add(archive, name, source, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        // Only a source that was taken belongs to the handle.
        zip_source_free(source);
        return false;
    }
    return Describe(archive, static_cast<zip_uint64_t>(index), item, password);
}

// Writes the archive and puts it in place. The handle is used up when that succeeds.
ZipFault Close(ArchiveHandle archive, const ByteProgress& progress)
{
    // All work happens in here: reading, deflating, writing, and by the source's COMMIT the rename.
    if (zip_close(archive.get()) == 0) {
        static_cast<void>(archive.release());
        return {};
    }
    ZipFault fault = FaultOf(*zip_get_error(archive.get()));
    // What is written is the archive as a whole, and a host that cancels means all of it.
    const bool isWhole = fault.error == ZipError::Cancelled || fault.error == ZipError::WriteFailed ||
                         fault.error == ZipError::DiskFull || fault.error == ZipError::ArchiveChanged;
    return std::move(fault).At(isWhole ? orvcore::UTF8String() : progress.current);
}

} // namespace

ZipFault PackAll(const PackTarget& target, const std::vector<PackItem>& items, ByteProgress& progress)
{
    // Asked when all is written and nothing replaced: the last moment at which a caller can still cancel. Packing again
    // replaces whatever is there, so it does not matter what that is by now.
    const auto approve = [&] { return progress.Finish(); };
    const auto always = [] { return true; };
    auto opened = OpenForWriting(nullptr, {target.path, approve, always, target.version});
    progress.Expect(std::accumulate(items.begin(), items.end(), std::uint64_t{0},
                                    [](std::uint64_t sum, const PackItem& item) { return sum + item.size; }));
    if (!opened) {
        return opened.Fault();
    }
    ArchiveHandle archive = std::move(*opened);
    // Before the files are opened: a caller that is cancelled already waits for nothing.
    if (!progress.Advance(0)) {
        return {ZipError::Cancelled};
    }
    for (const PackItem& item : items) {
        if (!Put(archive.get(), std::nullopt, item, target.password, progress)) {
            return FaultOf(*zip_get_error(archive.get())).At(item.name);
        }
    }
    return Close(std::move(archive), progress);
}

ZipFault PackOne(const PackTarget& target, std::shared_ptr<const ArchiveFile> old, std::optional<std::size_t> replaced,
                 const PackItem* item, ByteProgress& progress)
{
    // An estimate: what is read of the item and written of it, and what is copied. Bytes of the replaced entry are
    // counted though they are not copied.
    progress.Expect((old ? old->Size() : 0) + (item != nullptr ? 2 * item->size : 0));
    // The new archive holds what the old one held: put over another, it would undo what somebody else stored there.
    Placing placing{target.path, [&] { return progress.Finish(); }, {}, target.version};
    placing.written = [&](std::uint64_t size) { return progress.Advance(size); };
    // It holds the old file open until it has answered: the system gives the number of an open file to no other one, so
    // an equal number means the same file.
    placing.isUnchanged = [old, at = target.path] { return old ? old->IsStillAt(at) : !orvcore::Exists(at); };
    auto opened = OpenForWriting(std::move(old), std::move(placing));
    if (!opened) {
        return opened.Fault();
    }
    ArchiveHandle archive = std::move(*opened);
    const bool changed = item != nullptr ? Put(archive.get(), replaced, *item, target.password, progress)
                                         : zip_delete(archive.get(), replaced.value()) == 0;
    if (!changed) {
        return FaultOf(*zip_get_error(archive.get()));
    }
    return Close(std::move(archive), progress);
}

} // namespace orvstorage::detail
