#pragma once

#include <orvstorage/ZipFile.h>
#include <orvstorage/detail/ByteProgress.h>
#include <orvstorage/detail/packing/FolderScan.h>
#include <orvstorage/detail/reading/EntryReader.h>
#include <orvstorage/detail/unpacking/UnpackPlan.h>
#include <orvstorage/shared/EntryName.h>

#include <exception>
#include <new>

namespace orvstorage {

/// What an object and its copies share.
///
/// Three members say what this object knows of the archive's file:
///
/// - `archive`: what is open now. It is dropped before each change, because some systems do not replace a file that is
///   open, and because what it has read is no longer true afterwards. It is opened again when it is next needed.
/// - `seen`: the file's number, size and time as it was last opened or written here. It outlives `archive`: a change
///   asks whether the archive is still the one that the caller knows, also when it is not open any more.
/// - `isOutdated`: a change was refused because it was not. It stays until Reopen or until a new archive is packed.
///   A read in between opens the other program's archive, and so makes it the one that was `seen`; without this flag
///   that chance look would allow the next change to build on an archive that the caller has not asked for.
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
        detail::ZipFault fault;
        try {
            fault = operation();
        } catch (const std::bad_alloc&) {
            fault.error = ZipError::OutOfMemory;
        } catch (const std::filesystem::filesystem_error& error) {
            // Steps return their faults. This is for the standard library's own calls, which have no other way.
            fault = detail::WriteFault(error.code());
        }
        failure = fault.In(std::move(failure));
        return !fault;
    }

    // As Run, with a caller who is asked; what the caller's function threw goes on to the caller at the end.
    template <class Operation>
    bool RunAsking(ZipAction action, std::u8string_view entry, const detail::ByteProgress& asked,
                   const Operation& operation)
    {
        const bool done = Run(action, entry, operation);
        if (const std::exception_ptr thrown = asked.Thrown()) {
            std::rethrow_exception(thrown);
        }
        return done;
    }

    detail::ZipResult<detail::ZipArchive*> Open()
    {
        if (!archive) {
            auto opened = detail::ZipArchive::Open(path, password, limits);
            // Whatever the operation was, the archive could not be opened, so no entry is to be named.
            if (!opened) {
                detail::ZipFault fault = opened.Fault();
                fault.action = ZipAction::Open;
                return std::move(fault).At({});
            }
            archive = *opened;
            seen = archive->File()->Version();
        }
        return archive.get();
    }

    // Opens what a change builds on; null when there is nothing. Not when that is something else than what this object
    // knows.
    detail::ZipResult<detail::ZipArchive*> OpenToChange()
    {
        const auto known = seen; // opening makes it what is there now
        const auto opened = Open();
        if (!opened && opened.Fault().error != ZipError::FileMissing) {
            return opened;
        }
        // An object that has seen nothing takes what is there. One that has seen an archive wants to find the same: its
        // version as opened now, and still at the path. Nothing at all where there was one is a change, too.
        const bool isKnown =
            !known || (opened && archive->File()->Version() == *known && archive->File()->IsStillAt(path));
        if (isKnown && !isOutdated) {
            return archive.get();
        }
        isOutdated = true;
        archive.reset();
        return detail::ZipFault{ZipError::ArchiveChanged}.At({});
    }

    detail::ZipResult<detail::UnpackPlan> Plan()
    {
        auto opened = Open();
        return opened ? detail::MakeUnpackPlan(**opened, limits) : opened.Fault();
    }

    // Puts a file into the archive, which is made when there is none.
    detail::ZipFault Add(const detail::PackItem& item, bool replace, detail::ByteProgress& progress);
    // Takes the entry of this name out of the archive.
    detail::ZipFault Remove(std::u8string_view name, detail::ByteProgress& progress);
    // Packs the opened archive again, or a new one: see PackOne.
    detail::ZipFault Rebuild(std::optional<std::size_t> replaced, const detail::PackItem* item,
                             detail::ByteProgress& progress);

    // The entry's index when it is there and may be read. A name that unpacking refuses is refused here too: a caller
    // may make a path of it.
    detail::ZipResult<std::size_t> Find(std::u8string_view name)
    {
        if (const auto opened = Open(); !opened) {
            return opened.Fault();
        }
        auto found = archive->Find(name);
        if (!found) {
            return found;
        }
        const detail::ArchiveEntry& entry = archive->Entries()[*found];
        const ZipError badName = detail::CheckEntryName(entry.shown.name).error;
        const ZipError refusal = badName != ZipError::None ? badName : detail::EntryReader::Judge(entry, limits);
        return refusal == ZipError::None ? found : refusal;
    }
};

} // namespace orvstorage
