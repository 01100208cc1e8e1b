#include <orvcore/files/AtomicFile.h>
#include <orvstorage/detail/ZipState.h>
#include <orvstorage/detail/names/EntryName.h>
#include <orvstorage/detail/names/NameRegister.h>
#include <orvstorage/detail/packing/Packer.h>

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
        const bool isThere = state.Open() != nullptr;
        if (!isThere && failure.error != ZipError::FileMissing) {
            return false;
        }
        if (!isThere) {
            failure = {ZipError::None, ZipAction::Add, state.path, name.relative, {}};
        } else if (!FindPlace(*state.archive, name.relative, replace, replaced, failure)) {
            return false;
        }
        auto old = isThere ? state.archive->File() : nullptr;
        state.archive.reset(); // what it has read is about to be replaced
        return detail::PackOne({state.path, state.password}, std::move(old), replaced, item, failure);
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
        const bool done = detail::PackAll({state.path, state.password}, items, packing, failure);
        thrown = packing.Thrown();
        return done;
    });
    if (thrown) {
        std::rethrow_exception(thrown);
    }
    return packed;
}

} // namespace orvstorage
