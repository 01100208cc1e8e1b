#include <orvstorage/detail/reading/ZipArchive.h>

#include <orvstorage/detail/reading/ArchiveSource.h>

#include <algorithm>

namespace orvstorage::detail {

namespace {

constexpr std::uint8_t kUnix = ZIP_OPSYS_UNIX;
constexpr std::uint8_t kMac = ZIP_OPSYS_OS_X;
constexpr std::uint32_t kTypeMask = 0170000;
constexpr std::uint32_t kTypeFile = 0100000;
constexpr std::uint32_t kTypeDirectory = 0040000;
constexpr std::uint32_t kTypeLink = 0120000;
constexpr std::uint32_t kReparsePoint = 0x400; // a Windows link

// Windows programs of old wrote back-slashes; elsewhere a back-slash is a character of a name.
bool MadeOnWindows(std::uint8_t system)
{
    return system == ZIP_OPSYS_DOS || system == ZIP_OPSYS_OS_2 || system == ZIP_OPSYS_WINDOWS_NTFS ||
           system == ZIP_OPSYS_VFAT;
}

// The attributes mean what the system that made the entry means by them; a name that ends with a slash is a folder
// everywhere. A link is found by its attributes alone: its content is the path that it leads to.
EntryKind KindOf(const DirectoryRecord& record, bool namedAsDirectory)
{
    if (record.system != kUnix && record.system != kMac) {
        const bool link = MadeOnWindows(record.system) && (record.attributes & kReparsePoint) != 0;
        return link ? EntryKind::SymbolicLink : namedAsDirectory ? EntryKind::Directory : EntryKind::File;
    }
    switch ((record.attributes >> 16) & kTypeMask) {
    case kTypeLink:
        return EntryKind::SymbolicLink;
    case 0: // many writers store permissions alone, or nothing
    case kTypeFile:
    case kTypeDirectory:
        return namedAsDirectory ? EntryKind::Directory : EntryKind::File;
    default:
        return EntryKind::Special;
    }
}

// Some programs name the entries of a packed folder "./name".
void DropCurrentFolder(orvcore::UTF8String& name)
{
    constexpr std::u8string_view kCurrent = u8"./";
    while (name.size() > kCurrent.size() && name.starts_with(kCurrent)) {
        name.erase(0, kCurrent.size());
    }
}

orvcore::UTF8String NameOf(const DirectoryRecord& record, const zip_stat_t& stat)
{
    // Such a name was hidden from the library's UTF-8 (see CentralDirectory.cpp), and it shows control bytes as symbols
    // of code page 437. The stored bytes are taken, so that the name is refused for what it holds. Any other name that
    // is not flagged the library translates.
    const bool isOurs = record.nameHasControls && orvcore::IsWellFormedUTF8(record.name);
    orvcore::UTF8String name = orvcore::ToUTF8(isOurs ? record.name : std::string_view(stat.name));
    if (MadeOnWindows(record.system)) {
        std::replace(name.begin(), name.end(), u8'\\', u8'/');
    }
    DropCurrentFolder(name);
    return name;
}

// What the zip library knows besides depends on how it was built: a package must be good everywhere or nowhere.
bool IsSupported(std::uint16_t method)
{
    return method == ZIP_CM_STORE || method == ZIP_CM_DEFLATE;
}

} // namespace

ZipResult<std::shared_ptr<ZipArchive>> ZipArchive::Open(const std::filesystem::path& path, const std::string& password,
                                                        const ZipLimits& limits)
{
    auto file = ArchiveFile::Open(path);
    if (!file) {
        return file.Fault();
    }
    // Before the library opens anything: this also changes what the library will be shown.
    auto records = ReadCentralDirectory(**file, limits);
    if (!records) {
        return records.Fault();
    }
    auto archive = std::make_shared<ZipArchive>();
    archive->file_ = *file;
    archive->password_ = password;
    auto handle = archive->NewHandle();
    if (!handle) {
        return handle.Fault();
    }
    archive->handle_ = std::move(*handle);
    if (!archive->ReadEntries(*records)) {
        return ZipError::Inconsistent;
    }
    return archive;
}

// Each handle reads the directory again, from memory; that is what makes threads worth their while only for more than a
// few megabytes (Unpacker.cpp).
ZipResult<ArchiveHandle> ZipArchive::NewHandle() const
{
    auto handle = OpenForReading(file_);
    if (handle && !password_.empty()) {
        zip_set_default_password((*handle).get(), password_.c_str());
    }
    return handle;
}

ArchiveEntry ZipArchive::MakeEntry(const DirectoryRecord& record, const zip_stat_t& stat) const
{
    ArchiveEntry entry;
    entry.shown.name = NameOf(record, stat);
    entry.shown.size = record.size;
    entry.shown.compressedSize = record.compressedSize;
    entry.shown.isEncrypted = stat.encryption_method != ZIP_EM_NONE;
    entry.record = record;
    // The library's word for the method: of an AES entry it is the real one, which stands in a field.
    if (!IsSupported(stat.comp_method) && record.dataError == ZipError::None) {
        entry.record.dataError = ZipError::CompressionUnsupported;
    }
    entry.kind = KindOf(record, entry.shown.name.ends_with(u8'/'));
    entry.shown.isDirectory = entry.kind == EntryKind::Directory;
    entry.hasWeakPassword = stat.encryption_method == ZIP_EM_TRAD_PKWARE;
    // Lives as long as the archive, as do the views in `record`: both are kept by file_.
    entry.file = file_.get();
    return entry;
}

// Two readers of one directory must agree, or what was judged would not be what is read. Both number the entries in the
// directory's order, so an index means the same to our records and to the library.
bool ZipArchive::ReadEntries(const std::vector<DirectoryRecord>& records)
{
    const zip_int64_t count = zip_get_num_entries(handle_.get(), 0);
    bool agreed = count >= 0 && static_cast<std::uint64_t>(count) == records.size();
    entries_.reserve(records.size());
    for (std::size_t i = 0; agreed && i < records.size(); ++i) {
        const DirectoryRecord& record = records[i];
        zip_stat_t stat;
        zip_stat_init(&stat);
        agreed = zip_stat_index(handle_.get(), i, 0, &stat) == 0 && (stat.valid & ZIP_STAT_NAME) != 0 &&
                 stat.size == record.size && stat.comp_size == record.compressedSize && stat.crc == record.crc;
        if (agreed) {
            entries_.push_back(MakeEntry(record, stat));
        }
    }
    return agreed;
}

ZipResult<std::size_t> ZipArchive::Find(std::u8string_view name) const
{
    const auto hasName = [name](const ArchiveEntry& entry) { return entry.shown.name == name; };
    // Not by the library's look-up, which knows neither the names as they are shown here nor that one comes twice.
    const auto found = std::find_if(entries_.begin(), entries_.end(), hasName);
    if (found == entries_.end()) {
        return ZipError::EntryMissing;
    }
    if (std::find_if(found + 1, entries_.end(), hasName) != entries_.end()) {
        return ZipError::DuplicateName;
    }
    return static_cast<std::size_t>(found - entries_.begin());
}

} // namespace orvstorage::detail
