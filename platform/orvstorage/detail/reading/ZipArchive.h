#pragma once

#include <orvstorage/ZipEntry.h>
#include <orvstorage/detail/reading/CentralDirectory.h>
#include <orvstorage/detail/reading/Libzip.h>

#include <string>

namespace orvstorage::detail {

/// What an entry is, by the attributes its maker gave it.
enum class EntryKind : std::uint8_t { File, Directory, SymbolicLink, Special };

struct ArchiveEntry {
    ZipEntry shown;
    DirectoryRecord record;
    EntryKind kind = EntryKind::File;
    bool hasWeakPassword = false; ///< encrypted so that one wrong password in 256 is taken for the right one
    const ArchiveFile* file = nullptr;
};

/// One archive open for reading: its entries and a handle of the zip library. Used by one thread; a second thread
/// takes a handle of its own on the same file.
class ZipArchive {
public:
    /// Fails when the archive as a whole cannot be read.
    static ZipResult<std::shared_ptr<ZipArchive>> Open(const std::filesystem::path& path, const std::string& password,
                                                       const ZipLimits& limits);

    const std::vector<ArchiveEntry>& Entries() const
    {
        return entries_;
    }
    const std::shared_ptr<const ArchiveFile>& File() const
    {
        return file_;
    }
    zip_t* Handle() const
    {
        return handle_.get();
    }
    /// Another handle on the same file, for another thread.
    ZipResult<ArchiveHandle> NewHandle() const;

    /// The index of the one entry of exactly this name. Fails when there is none or there are several.
    ZipResult<std::size_t> Find(std::u8string_view name) const;

private:
    bool ReadEntries(const std::vector<DirectoryRecord>& records);
    ArchiveEntry MakeEntry(const DirectoryRecord& record, const zip_stat_t& stat) const;

    // Above the handle and the entries, which both point into it: members go in the opposite order.
    std::shared_ptr<const ArchiveFile> file_;
    std::string password_;
    ArchiveHandle handle_;
    std::vector<ArchiveEntry> entries_;
};

} // namespace orvstorage::detail
