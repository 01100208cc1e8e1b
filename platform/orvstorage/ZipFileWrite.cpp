#include <orvcore/files/AtomicFile.h>
#include <orvcore/text/Printable.h>
#include <orvstorage/detail/ZipState.h>
#include <orvstorage/detail/names/NameRegister.h>
#include <orvstorage/detail/packing/Packer.h>
#include <orvstorage/detail/unpacking/EntryUnpacking.h>
#include <orvstorage/shared/EntryName.h>

// Changes of an archive. None of them touches the file: a new archive is written beside it and takes its place at the
// end. The order of one change:
//
// - a cheap look at whether the path may be replaced at all, before work that may take minutes;
// - open what is there (OpenToChange), refusing an archive that is another one than this object knows;
// - judge the entry: its name must fit in, the password must be the one of the others;
// - write the new archive (PackOne): the zip library copies the other entries as they are packed;
// - under the folder's lock, look once more that the old archive is still the one that was read, and rename.
//
// A failure or a cancel at any of these leaves the old archive; what remains is a private file, which its owner
// removes.

namespace orvstorage {

namespace {

using detail::ZipArchive;
using detail::ZipFault;
using detail::ZipResult;

// A new entry must not make the archive one that cannot be unpacked: its name may clash with another one's where case
// does not count, or need a folder where another entry is a file. What the old entries' own names answer does not
// matter here: an archive may hold bad ones, and they stay refused by themselves.
ZipError FitIn(const ZipArchive& archive, const ZipLimits& limits, const orvcore::UTF8String& relative)
{
    detail::NameRegister names(limits);
    for (const detail::ArchiveEntry& entry : archive.Entries()) {
        names.Enter(detail::CheckEntryName(entry.shown.name).relative, entry.kind == detail::EntryKind::Directory);
    }
    return names.Enter(relative, false);
}

// Finds what stands at the name now; nothing when the entry is new.
ZipResult<std::optional<std::size_t>> FindPlace(const ZipArchive& archive, const ZipLimits& limits,
                                                const orvcore::UTF8String& name, bool replace)
{
    if (auto found = archive.Find(name)) {
        return replace ? ZipResult(std::optional(*found)) : ZipError::EntryExists;
    } else if (found.Fault().error != ZipError::EntryMissing) {
        return found.Fault();
    }
    const ZipError error = FitIn(archive, limits, name);
    return error == ZipError::None ? ZipResult(std::optional<std::size_t>()) : error;
}

// It will be read whole, to see whether the password opens it.
std::optional<std::size_t> SmallestEncrypted(const std::vector<detail::ArchiveEntry>& entries)
{
    std::optional<std::size_t> smallest;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].shown.isEncrypted && (!smallest || entries[i].shown.size < entries[*smallest].shown.size)) {
            smallest = i;
        }
    }
    return smallest;
}

// One archive has one password: it must open the entry that is replaced, or else another one.
ZipFault CheckPassword(const ZipArchive& archive, std::optional<std::size_t> replaced, bool hasPassword)
{
    const auto& entries = archive.Entries();
    // Without a password new entries are added in the clear; but an encrypted one is not replaced by somebody who
    // cannot read it.
    const bool isOpened = replaced && entries[*replaced].shown.isEncrypted;
    const auto asked = isOpened ? replaced : hasPassword ? SmallestEncrypted(entries) : std::nullopt;
    // Read to its end: by the bytes that a format has for it, a wrong password is known mostly, not always.
    const ZipFault found = asked ? detail::TestEntry(archive, *asked) : ZipFault();
    if (found.error == ZipError::PasswordNeeded || found.error == ZipError::WrongPassword) {
        return {found.error, found.detail}; // of the entry that is added
    }
    return {}; // damage of what is replaced, or is copied as it is, is no hindrance
}

// What the zip library would write down otherwise than it stands there: encryption of an unknown kind, which is hidden
// from it, and NULs in names, which it takes for spaces. A refused entry could become one that is not.
ZipFault CheckCanBeCopied(const std::vector<detail::ArchiveEntry>& entries)
{
    for (const detail::ArchiveEntry& entry : entries) {
        const ZipError error = entry.record.dataError == ZipError::EncryptionUnsupported ? entry.record.dataError
                               : entry.record.name.find('\0') != std::string_view::npos  ? ZipError::ControlCharacter
                                                                                         : ZipError::None;
        if (error != ZipError::None) { // it is not that entry which is added or packed
            const std::string name = orvcore::Printable(orvcore::AsNarrow(entry.shown.name));
            return ZipFault{error, "its entry \"" + name + '"'}.At({});
        }
    }
    return {};
}

// Asked before the work, which may take minutes.
ZipFault CheckMayWrite(const std::filesystem::path& archive)
{
    std::error_code error;
    return orvcore::CheckReplaceable(archive, error) ? ZipFault() : detail::WriteFault(error).At({});
}

} // namespace

ZipFault ZipFile::State::Add(const detail::PackItem& item, bool replace, detail::ByteProgress& progress)
{
    auto opened = OpenToChange();
    if (!opened) {
        return opened.Fault();
    }
    std::optional<std::size_t> replaced;
    if (*opened != nullptr) {
        auto place = FindPlace(**opened, limits, item.name, replace);
        ZipFault fault = place ? CheckPassword(**opened, *place, !password.empty()) : place.Fault();
        if (fault) {
            return fault;
        }
        replaced = *place;
    }
    return Rebuild(replaced, &item, progress);
}

ZipFault ZipFile::State::Remove(std::u8string_view name, detail::ByteProgress& progress)
{
    auto opened = OpenToChange();
    if (!opened) {
        return opened.Fault();
    }
    if (*opened == nullptr) {
        return {ZipError::FileMissing};
    }
    auto place = (*opened)->Find(name);
    if (!place) {
        return place.Fault();
    }
    // By default the zip library writes no empty archive but deletes the file.
    if ((*opened)->Entries().size() == 1) {
        return {ZipError::NothingToPack};
    }
    return Rebuild(*place, nullptr, progress);
}

ZipFault ZipFile::State::Rebuild(std::optional<std::size_t> replaced, const detail::PackItem* item,
                                 detail::ByteProgress& progress)
{
    std::shared_ptr<const detail::ArchiveFile> old;
    if (archive) {
        if (ZipFault fault = CheckCanBeCopied(archive->Entries())) {
            return fault;
        }
        old = archive->File();
    }
    archive.reset(); // what it has read is about to be replaced
    ZipFault fault = detail::PackOne({path, password, seen}, std::move(old), replaced, item, progress);
    // After success `seen` has the new file's version already: the source gave it under the folder's lock.
    isOutdated = fault.error == ZipError::ArchiveChanged;
    return fault;
}

bool ZipFile::AddItem(std::u8string_view entryName, const std::filesystem::path& directory, bool replace) const
{
    return AddItem(entryName, directory, replace, {}, nullptr);
}

bool ZipFile::AddItem(std::u8string_view entryName, const std::filesystem::path& directory, bool replace,
                      const ZipProgress& progress, void* opaque) const
{
    const auto relative = orvcore::PathFromUTF8(detail::CheckEntryName(entryName).relative); // a bad name: told below
    return AddFile(entryName, directory / std::filesystem::path(relative).make_preferred(), replace, progress, opaque);
}

bool ZipFile::AddFile(std::u8string_view entryName, const std::filesystem::path& file, bool replace,
                      const ZipProgress& progress, void* opaque) const
{
    State& state = *state_;
    detail::ByteProgress packing(progress, opaque);
    return state.RunAsking(ZipAction::Add, entryName, packing, [&]() -> ZipFault {
        const detail::EntryName name = detail::CheckEntryName(entryName);
        if (name.error != ZipError::None) {
            return {name.error};
        }
        if (ZipFault fault = CheckMayWrite(state.path)) {
            return fault;
        }
        auto item = detail::DescribeItem(file, name.relative);
        return item ? state.Add(*item, replace, packing) : item.Fault();
    });
}

bool ZipFile::RemoveItem(std::u8string_view entryName) const
{
    State& state = *state_;
    const ZipProgress nobody;
    detail::ByteProgress packing(nobody, nullptr);
    return state.Run(ZipAction::Remove, entryName, [&]() -> ZipFault {
        ZipFault fault = CheckMayWrite(state.path);
        return fault ? fault : state.Remove(entryName, packing);
    });
}

bool ZipFile::Zip(const std::filesystem::path& directory, const ZipProgress& progress, void* opaque) const
{
    State& state = *state_;
    detail::ByteProgress packing(progress, opaque);
    return state.RunAsking(ZipAction::Pack, {}, packing, [&] {
        if (ZipFault fault = CheckMayWrite(state.path)) {
            return fault;
        }
        auto items = detail::ScanFolder(directory, state.path, state.limits);
        if (!items) {
            return items.Fault();
        }
        state.archive.reset();
        ZipFault fault = detail::PackAll({state.path, state.password, state.seen}, *items, packing);
        // A newly packed archive is this object's own, whatever was refused before.
        state.isOutdated = state.isOutdated && fault;
        return fault;
    });
}

} // namespace orvstorage
