#pragma once

#include <orvstorage/ZipFile.h>
#include <orvstorage/detail/names/EntryName.h>
#include <orvstorage/detail/reading/EntryReader.h>

#include <new>

namespace orvstorage {

/// What an object and its copies share.
struct ZipFile::State {
    std::filesystem::path path;
    std::string password;
    ZipLimits limits;
    ZipFailure failure;
    std::shared_ptr<detail::ZipArchive> archive;

    // Every operation begins here and leaves its failure, if any, in `failure`.
    template <class Operation>
    bool Run(ZipAction action, std::u8string_view entry, const Operation& operation)
    {
        failure = {ZipError::None, action, path, orvcore::UTF8String(entry), {}};
        try {
            return operation(failure) && !failure;
        } catch (const std::bad_alloc&) {
            failure.error = ZipError::OutOfMemory;
        } catch (const std::filesystem::filesystem_error& error) {
            TranslateWriteError(error.code(), failure);
        }
        return false;
    }

    detail::ZipArchive* Open()
    {
        if (!archive) {
            ZipFailure opening{ZipError::None, ZipAction::Open, path, {}, {}};
            archive = detail::ZipArchive::Open(path, password, limits, opening);
            if (!archive) {
                failure = opening;
            }
        }
        return archive.get();
    }

    // The entry's index when it is there and may be read. A name that unpacking refuses is refused here too: a caller
    // may make a path of it.
    bool Find(std::u8string_view name, std::size_t& index)
    {
        if (Open() == nullptr || !archive->Find(name, index, failure)) {
            return false;
        }
        const detail::ArchiveEntry& entry = archive->Entries()[index];
        failure.error = detail::CheckEntryName(entry.shown.name).error;
        return !failure && detail::EntryReader::MayRead(entry, limits, failure);
    }
};

} // namespace orvstorage
