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

} // namespace

std::shared_ptr<ZipArchive> ZipArchive::Open(const std::filesystem::path& path, const std::string& password,
                                             const ZipLimits& limits, ZipFailure& failure)
{
    auto archive = std::make_shared<ZipArchive>();
    std::vector<DirectoryRecord> records;
    archive->file_ = ArchiveFile::Open(path, failure);
    if (!archive->file_ || !ReadCentralDirectory(*archive->file_, limits, records, failure)) {
        return nullptr;
    }
    archive->password_ = password;
    archive->handle_ = archive->NewHandle(failure);
    return archive->handle_ && archive->ReadEntries(records, failure) ? archive : nullptr;
}

ArchiveHandle ZipArchive::NewHandle(ZipFailure& failure) const
{
    ArchiveHandle handle = OpenForReading(file_, failure);
    if (handle && !password_.empty()) {
        zip_set_default_password(handle.get(), password_.c_str());
    }
    return handle;
}

// Two readers of one directory must agree, or what was judged would not be what is read.
bool ZipArchive::ReadEntries(const std::vector<DirectoryRecord>& records, ZipFailure& failure)
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
            ArchiveEntry& entry = entries_.emplace_back();
            entry.shown.name = orvcore::ToUTF8(std::string_view(stat.name));
            if (MadeOnWindows(record.system)) {
                std::replace(entry.shown.name.begin(), entry.shown.name.end(), u8'\\', u8'/');
            }
            DropCurrentFolder(entry.shown.name);
            entry.shown.size = record.size;
            entry.shown.compressedSize = record.compressedSize;
            entry.shown.isEncrypted = stat.encryption_method != ZIP_EM_NONE;
            entry.kind = KindOf(record, entry.shown.name.ends_with(u8'/'));
            entry.shown.isDirectory = entry.kind == EntryKind::Directory;
            entry.dataError = record.dataError;
            entry.nameHasNul = record.nameHasNul;
        }
    }
    failure.error = agreed ? failure.error : ZipError::Inconsistent;
    return agreed;
}

bool ZipArchive::Find(std::u8string_view name, std::size_t& index, ZipFailure& failure) const
{
    const auto hasName = [name](const ArchiveEntry& entry) { return entry.shown.name == name && !entry.nameHasNul; };
    const auto found = std::find_if(entries_.begin(), entries_.end(), hasName);
    if (found == entries_.end()) {
        failure.error = ZipError::EntryMissing;
    } else if (std::find_if(found + 1, entries_.end(), hasName) != entries_.end()) {
        failure.error = ZipError::DuplicateName;
    }
    index = static_cast<std::size_t>(found - entries_.begin());
    return !failure;
}

} // namespace orvstorage::detail
