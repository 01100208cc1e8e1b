#include <orvcore/files/AtomicFile.h>
#include <orvstorage/detail/ZipState.h>
#include <orvstorage/detail/names/NameRegister.h>
#include <orvstorage/detail/packing/Packer.h>
#include <orvstorage/detail/unpacking/Unpacker.h>
#include <orvstorage/shared/EntryName.h>

namespace orvstorage {

namespace {

using detail::ZipArchive;

// A new entry must not make the archive one that cannot be unpacked.
bool FitsIn(const ZipArchive& archive, const ZipLimits& limits, const orvcore::UTF8String& relative,
            ZipFailure& failure)
{
    detail::NameRegister names(limits);
    for (const detail::ArchiveEntry& entry : archive.Entries()) {
        names.Enter(detail::CheckEntryName(entry.shown.name).relative, entry.kind == detail::EntryKind::Directory);
    }
    failure.error = names.Enter(relative, false);
    return !failure;
}

// Finds what stands at the name now; `replaced` stays empty when the entry is new.
bool FindPlace(const ZipArchive& archive, const ZipLimits& limits, const orvcore::UTF8String& name, bool replace,
               std::optional<std::size_t>& replaced, ZipFailure& failure)
{
    std::size_t index = 0;
    ZipFailure search;
    if (archive.Find(name, index, search)) {
        replaced = index;
        failure.error = replace ? ZipError::None : ZipError::EntryExists;
        return replace;
    }
    if (search.error != ZipError::EntryMissing) {
        failure.error = search.error;
        return false;
    }
    return FitsIn(archive, limits, name, failure);
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
bool PasswordFits(const ZipArchive& archive, std::optional<std::size_t> replaced, bool hasPassword, ZipFailure& failure)
{
    const auto& entries = archive.Entries();
    const bool isOpened = replaced && entries[*replaced].shown.isEncrypted;
    const auto asked = isOpened ? replaced : hasPassword ? SmallestEncrypted(entries) : std::nullopt;
    ZipFailure found;
    if (asked && !detail::TestEntry(archive, *asked, found) &&
        (found.error == ZipError::PasswordNeeded || found.error == ZipError::WrongPassword)) {
        failure.error = found.error;
        failure.detail = found.detail;
    }
    return !failure; // damage of what is replaced, or is copied as it is, is no hindrance
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

} // namespace

bool ZipFile::AddItem(std::u8string_view entryName, const std::filesystem::path& directory, bool replace) const
{
    State& state = *state_;
    return state.Run(ZipAction::Add, entryName, [&](ZipFailure& failure) {
        const detail::EntryName name = detail::CheckEntryName(entryName);
        failure.error = name.error;
        detail::PackItem item;
        std::optional<std::size_t> replaced;
        if (failure || !MayWrite(state.path, failure) ||
            !detail::DescribeItem(directory / orvcore::PathFromUTF8(name.relative).make_preferred(), name.relative,
                                  item, failure)) {
            return false;
        }
        bool isThere = false;
        if (!state.OpenToChange(isThere, failure)) {
            return false;
        }
        if (isThere && (!FindPlace(*state.archive, state.limits, name.relative, replace, replaced, failure) ||
                        !PasswordFits(*state.archive, replaced, !state.password.empty(), failure))) {
            return false;
        }
        auto old = isThere ? state.archive->File() : nullptr;
        state.archive.reset(); // what it has read is about to be replaced
        const bool done =
            detail::PackOne({state.path, state.password, state.seen}, std::move(old), replaced, item, failure);
        state.isOutdated = failure.error == ZipError::ArchiveChanged;
        return done;
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
