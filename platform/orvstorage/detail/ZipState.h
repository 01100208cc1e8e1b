#pragma once

#include <orvstorage/ZipFile.h>
#include <orvstorage/detail/reading/EntryReader.h>
#include <orvstorage/shared/EntryName.h>

#include <exception>
#include <new>

namespace orvstorage {

/// What an object and its copies share.
struct ZipFile::State {
    std::filesystem::path path;
    std::string password;
    ZipLimits limits;
    ZipFailure failure;
    std::shared_ptr<detail::ZipArchive> archive;
    std::optional<orvcore::detail::FileVersion> seen; // the archive's file, as it was last opened or written here
    bool isOutdated = false;                          // a change was refused because the file was another one

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

    // As Run; what the caller's progress function threw, which `operation` stores, goes on to the caller at the end.
    template <class Operation>
    bool RunAsking(ZipAction action, std::u8string_view entry, const Operation& operation)
    {
        std::exception_ptr thrown;
        const bool done = Run(action, entry, [&](ZipFailure& failing) { return operation(failing, thrown); });
        if (thrown) {
            std::rethrow_exception(thrown);
        }
        return done;
    }

    detail::ZipArchive* Open()
    {
        if (!archive) {
            if (auto opened = detail::ZipArchive::Open(path, password, limits)) {
                archive = *opened;
                seen = archive->File()->Version();
            } else {
                failure = {ZipError::None, ZipAction::Open, path, {}, {}};
                opened.Fault().Tell(failure);
            }
        }
        return archive.get();
    }

    // Opens what a change builds on, if there is anything. Not when that is something else than what this object knows.
    bool OpenToChange(bool& isThere, ZipFailure& failing)
    {
        const auto known = seen;
        const ZipFailure before = failing;
        isThere = Open() != nullptr;
        if (!isThere && failing.error != ZipError::FileMissing) {
            return false;
        }
        failing = before;
        const bool isKnown =
            !known || (isThere && archive->File()->Version() == *known && archive->File()->IsStillAt(path));
        if (isKnown && !isOutdated) {
            return true;
        }
        isOutdated = true;
        archive.reset();
        failing.error = ZipError::ArchiveChanged;
        failing.entry.clear();
        return false;
    }

    // The entry's index when it is there and may be read. A name that unpacking refuses is refused here too: a caller
    // may make a path of it.
    std::optional<std::size_t> Find(std::u8string_view name)
    {
        if (Open() == nullptr) {
            return std::nullopt;
        }
        auto found = archive->Find(name);
        if (!found) {
            found.Fault().Tell(failure);
            return std::nullopt;
        }
        const detail::ArchiveEntry& entry = archive->Entries()[*found];
        const ZipError badName = detail::CheckEntryName(entry.shown.name).error;
        failure.error = badName != ZipError::None ? badName : detail::EntryReader::Judge(entry, limits);
        return failure ? std::nullopt : std::optional(*found);
    }
};

} // namespace orvstorage
