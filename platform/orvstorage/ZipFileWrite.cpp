#include <orvcore/files/AtomicFile.h>
#include <orvstorage/detail/ZipState.h>
#include <orvstorage/detail/names/NameRegister.h>
#include <orvstorage/detail/packing/Packer.h>
#include <orvstorage/detail/unpacking/Unpacker.h>
#include <orvstorage/shared/EntryName.h>

namespace orvstorage {

namespace {

using detail::ZipArchive;
using detail::ZipFault;
using detail::ZipResult;

// A new entry must not make the archive one that cannot be unpacked.
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
    const bool isOpened = replaced && entries[*replaced].shown.isEncrypted;
    const auto asked = isOpened ? replaced : hasPassword ? SmallestEncrypted(entries) : std::nullopt;
    ZipFailure found;
    if (asked && !detail::TestEntry(archive, *asked, found) &&
        (found.error == ZipError::PasswordNeeded || found.error == ZipError::WrongPassword)) {
        return {found.error, found.detail};
    }
    return {}; // damage of what is replaced, or is copied as it is, is no hindrance
}

// Asked before the work, which may take minutes.
bool MayWrite(const std::filesystem::path& archive, ZipFailure& failure)
{
    std::error_code error;
    if (!orvcore::MayReplace(archive, error)) {
        TranslateWriteError(error, failure);
        failure.entry.clear();
    }
    return !failure;
}

// What has been read is about to be replaced.
template <class State>
bool Change(State& state, bool isThere, std::optional<std::size_t> replaced, const detail::PackItem* item,
            ZipFailure& failure)
{
    auto old = isThere ? state.archive->File() : nullptr;
    state.archive.reset();
    const bool done =
        detail::PackOne({state.path, state.password, state.seen}, std::move(old), replaced, item, failure);
    state.isOutdated = failure.error == ZipError::ArchiveChanged;
    return done;
}

} // namespace

bool ZipFile::AddItem(std::u8string_view entryName, const std::filesystem::path& directory, bool replace) const
{
    const auto relative = orvcore::PathFromUTF8(detail::CheckEntryName(entryName).relative); // a bad name: told below
    return AddFile(entryName, directory / std::filesystem::path(relative).make_preferred(), replace);
}

bool ZipFile::AddFile(std::u8string_view entryName, const std::filesystem::path& file, bool replace) const
{
    State& state = *state_;
    return state.Run(ZipAction::Add, entryName, [&](ZipFailure& failure) {
        const detail::EntryName name = detail::CheckEntryName(entryName);
        failure.error = name.error;
        detail::PackItem item;
        std::optional<std::size_t> replaced;
        if (failure || !MayWrite(state.path, failure) || !detail::DescribeItem(file, name.relative, item, failure)) {
            return false;
        }
        bool isThere = false;
        if (!state.OpenToChange(isThere, failure)) {
            return false;
        }
        if (isThere) {
            auto place = FindPlace(*state.archive, state.limits, name.relative, replace);
            const ZipFault fault =
                place ? CheckPassword(*state.archive, *place, !state.password.empty()) : place.Fault();
            if (fault) {
                return fault.Tell(failure);
            }
            replaced = *place;
        }
        return Change(state, isThere, replaced, &item, failure);
    });
}

bool ZipFile::RemoveItem(std::u8string_view entryName) const
{
    State& state = *state_;
    return state.Run(ZipAction::Remove, entryName, [&](ZipFailure& failure) {
        bool isThere = false;
        if (!MayWrite(state.path, failure) || !state.OpenToChange(isThere, failure)) {
            return false;
        }
        if (!isThere) {
            return ZipFault{ZipError::FileMissing}.Tell(failure);
        }
        auto place = state.archive->Find(entryName);
        if (!place) {
            return place.Fault().Tell(failure);
        }
        if (state.archive->Entries().size() == 1) {
            return ZipFault{ZipError::NothingToPack}.Tell(failure);
        }
        return Change(state, true, *place, nullptr, failure);
    });
}

bool ZipFile::Zip(const std::filesystem::path& directory, const ZipProgress& progress, void* opaque) const
{
    State& state = *state_;
    return state.RunAsking(ZipAction::Pack, {}, [&](ZipFailure& failure, std::exception_ptr& thrown) {
        std::vector<detail::PackItem> items;
        if (!MayWrite(state.path, failure) ||
            !detail::ScanFolder(directory, state.path, state.limits, items, failure)) {
            return false;
        }
        std::uint64_t total = 0;
        for (const detail::PackItem& item : items) {
            total += item.size;
        }
        state.archive.reset();
        detail::ByteProgress packing(progress, opaque, total);
        const bool done = detail::PackAll({state.path, state.password, state.seen}, items, packing, failure);
        state.isOutdated = state.isOutdated && !done;
        thrown = packing.Thrown();
        return done;
    });
}

} // namespace orvstorage
