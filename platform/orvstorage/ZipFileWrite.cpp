#include <orvcore/AtomicFile.h>
#include <orvstorage/detail/EntryName.h>
#include <orvstorage/detail/NameRegister.h>
#include <orvstorage/detail/Packer.h>
#include <orvstorage/detail/Unpacker.h>
#include <orvstorage/detail/ZipState.h>

namespace orvstorage {

namespace {

using detail::ZipArchive;

// A new entry must not make the archive one that cannot be unpacked.
bool FitsIn(const ZipArchive& archive, const orvcore::UTF8String& relative, ZipFailure& failure)
{
    detail::NameRegister names;
    for (const detail::ArchiveEntry& entry : archive.Entries()) {
        names.Enter(detail::CheckEntryName(entry.shown.name).relative, entry.kind == detail::EntryKind::Directory);
    }
    failure.error = names.Enter(relative, false);
    return !failure;
}

// Finds what stands at the name now; `replaced` stays empty when the entry is new.
bool FindPlace(const ZipArchive& archive, const orvcore::UTF8String& name, bool replace,
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
    return FitsIn(archive, name, failure);
}

// The smallest of the encrypted entries.
std::optional<std::size_t> OneEncrypted(const std::vector<detail::ArchiveEntry>& entries)
{
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].shown.isEncrypted && (!found || entries[i].shown.size < entries[*found].shown.size)) {
            found = i;
        }
    }
    return found;
}

// No archive is to end with two passwords, nor is an entry to lose its own: what is encrypted must open with the
// password that the new entry gets. One entry stands for all.
bool PasswordFits(const ZipArchive& archive, const ZipLimits& limits, bool hasPassword,
                  std::optional<std::size_t> replaced, ZipFailure& failure)
{
    const auto& entries = archive.Entries();
    const bool isEncrypted = replaced && entries[*replaced].shown.isEncrypted;
    const auto probe = isEncrypted ? replaced : hasPassword ? OneEncrypted(entries) : std::nullopt;
    if (!probe) {
        return true;
    }
    ZipFailure found = failure;
    if (entries[*probe].shown.size > limits.maxItemSize) {
        found.error = ZipError::EntryTooLarge;
    } else if (detail::EntryReader::MayRead(entries[*probe], limits, found)) {
        detail::TestEntry(archive, *probe, found);
    }
    failure.error = found.error;
    failure.detail = found.detail;
    return !failure;
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
        if (isThere && (!FindPlace(*state.archive, name.relative, replace, replaced, failure) ||
                        !PasswordFits(*state.archive, state.limits, !state.password.empty(), replaced, failure))) {
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
    std::exception_ptr thrown;
    const bool packed = state.Run(ZipAction::Pack, {}, [&](ZipFailure& failure) {
        std::vector<detail::PackItem> items;
        if (!MayWrite(state.path, failure) || !detail::ScanFolder(directory, state.path, items, failure)) {
            return false;
        }
        std::uint64_t total = 0;
        for (const detail::PackItem& item : items) {
            total += item.size;
        }
        state.archive.reset();
        detail::PackProgress packing(progress, opaque, total);
        const bool done = detail::PackAll({state.path, state.password, state.seen}, items, packing, failure);
        state.isOutdated = state.isOutdated && !done;
        thrown = packing.Thrown();
        return done;
    });
    if (thrown) {
        std::rethrow_exception(thrown);
    }
    return packed;
}

} // namespace orvstorage
