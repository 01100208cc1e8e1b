#include <orvstorage/ZipFile.h>

#include <orvstorage/detail/ZipState.h>
#include <orvstorage/detail/reading/EntryReader.h>
#include <orvstorage/detail/unpacking/UnpackPlan.h>
#include <orvstorage/detail/unpacking/Unpacker.h>

#include <algorithm>

namespace orvstorage {

ZipFile::ZipFile(const std::filesystem::path& archive, const std::string& password)
    : state_(std::make_shared<State>())
{
    state_->path = archive;
    state_->password = password;
}

template <class Container>
bool ZipFile::ReadItem(std::u8string_view entryName, std::uint64_t maxSize, Container& content) const
{
    State& state = *state_;
    return state.Run(ZipAction::Read, entryName, [&](ZipFailure& failure) {
        const auto index = state.Find(entryName);
        if (!index) {
            return false;
        }
        const detail::ArchiveEntry& entry = state.archive->Entries()[*index];
        if (entry.shown.size > std::min(maxSize, state.limits.maxItemSize)) {
            failure.error = ZipError::EntryTooLarge;
            return false;
        }
        auto reader = detail::EntryReader::Open(state.archive->Handle(), *index, entry);
        const detail::ZipFault fault = reader ? (*reader).ReadAll(content) : reader.Fault();
        return !fault || fault.Tell(failure);
    });
}

ZipBuffer ZipFile::UnzipItem(std::u8string_view entryName) const
{
    auto content = std::make_shared<std::vector<std::uint8_t>>();
    return ReadItem(entryName, std::numeric_limits<std::uint64_t>::max(), *content) ? content : nullptr;
}

std::optional<orvcore::UTF8String> ZipFile::UnzipText(std::u8string_view entryName, std::uint64_t maxSize) const
{
    std::optional<orvcore::UTF8String> text(std::in_place);
    if (!ReadItem(entryName, maxSize, *text)) {
        text.reset();
    }
    return text;
}

bool ZipFile::UnzipItems(std::u8string_view entryName, const std::filesystem::path& destination) const
{
    return UnzipItems(entryName, destination, {}, nullptr);
}

bool ZipFile::UnzipItems(std::u8string_view entryName, const std::filesystem::path& destination,
                         const ZipProgress& progress, void* opaque) const
{
    State& state = *state_;
    return state.RunAsking(ZipAction::Unpack, entryName, [&](ZipFailure& failure, std::exception_ptr& thrown) {
        const auto index = state.Find(entryName);
        if (!index) {
            return false;
        }
        detail::ByteProgress asked(progress, opaque, state.archive->Entries()[*index].shown.size);
        const bool done = detail::UnpackToFile(*state.archive, *index, destination, asked, failure);
        thrown = asked.Thrown();
        return done;
    });
}

bool ZipFile::UnzipOver(std::u8string_view entryName, const std::filesystem::path& destination) const
{
    State& state = *state_;
    return state.Run(ZipAction::Unpack, entryName, [&](ZipFailure& failure) {
        const auto index = state.Find(entryName);
        return index && detail::UnpackOver(*state.archive, *index, destination, failure);
    });
}

bool ZipFile::UnZip(const std::filesystem::path& directory, bool overwrite) const
{
    return UnZip(directory, overwrite, {}, nullptr);
}

bool ZipFile::UnZip(const std::filesystem::path& directory, bool overwrite, const ZipProgress& progress,
                    void* opaque) const
{
    State& state = *state_;
    return state.RunAsking(ZipAction::Unpack, {}, [&](ZipFailure& failure, std::exception_ptr& thrown) {
        detail::UnpackPlan plan;
        if (state.Open() == nullptr || !detail::MakeUnpackPlan(*state.archive, state.limits, plan, failure)) {
            return false;
        }
        const auto ifExists = overwrite ? orvcore::IfExists::Overwrite : orvcore::IfExists::Keep;
        detail::ByteProgress asked(progress, opaque, plan.totalSize);
        const bool done = detail::Unpack(*state.archive, plan, directory, ifExists, asked, failure);
        thrown = asked.Thrown();
        if (!done) {
            return false;
        }
        if (!plan.refused.empty()) {
            failure = plan.refused.front();
        }
        return !failure;
    });
}

std::vector<ZipEntry> ZipFile::GetEntries() const
{
    State& state = *state_;
    std::vector<ZipEntry> entries;
    state.Run(ZipAction::Read, {}, [&](ZipFailure&) {
        if (state.Open() == nullptr) {
            return false;
        }
        for (const detail::ArchiveEntry& entry : state.archive->Entries()) {
            entries.push_back(entry.shown);
        }
        return true;
    });
    return entries;
}

bool ZipFile::Contains(std::u8string_view entryName) const
{
    const ZipFailure before = state_->failure;
    const std::vector<ZipEntry> entries = GetEntries();
    state_->failure = before;
    return std::any_of(entries.begin(), entries.end(), [&](const ZipEntry& entry) { return entry.name == entryName; });
}

std::vector<ZipFailure> ZipFile::Check(bool readContents) const
{
    return Check(readContents, {});
}

std::vector<ZipFailure> ZipFile::CheckContents(const std::function<void(std::size_t, std::string_view)>& tell) const
{
    return Check(true, tell);
}

std::vector<ZipFailure> ZipFile::Check(bool readContents,
                                       const std::function<void(std::size_t, std::string_view)>& tell) const
{
    State& state = *state_;
    detail::UnpackPlan plan;
    state.Run(ZipAction::Unpack, {}, [&](ZipFailure& failure) {
        if (state.Open() == nullptr || !detail::MakeUnpackPlan(*state.archive, state.limits, plan, failure)) {
            plan.refused.push_back(failure);
            return false;
        }
        const ZipFailure blank = failure;
        const auto test = [&](std::size_t index) {
            ZipFailure found = blank;
            std::string head;
            if (!detail::TestEntry(*state.archive, index, found, &head)) {
                plan.refused.push_back(std::move(found));
            } else if (tell) {
                tell(index, head);
            }
        };
        for (std::size_t i = 0; readContents && i < plan.files.size(); ++i) {
            test(plan.files[i].index);
        }
        const auto& entries = state.archive->Entries();
        for (std::size_t i = 0; readContents && i < entries.size(); ++i) {
            if (entries[i].kind == detail::EntryKind::Directory && // what is refused was told among the refusals
                detail::EntryReader::Judge(entries[i], state.limits) == ZipError::None) {
                test(i);
            }
        }
        failure = plan.refused.empty() ? failure : plan.refused.front();
        return plan.refused.empty();
    });
    return std::move(plan.refused);
}

const std::filesystem::path& ZipFile::GetPath() const noexcept
{
    return state_->path;
}

void ZipFile::Reopen() const
{
    state_->archive.reset();
    state_->seen.reset();
    state_->isOutdated = false;
}

void ZipFile::SetLimits(const ZipLimits& limits)
{
    state_->limits = limits;
    state_->archive.reset();
}

ZipLimits ZipFile::GetLimits() const
{
    return state_->limits;
}

ZipFailure ZipFile::GetLastFailure() const
{
    return state_->failure;
}

void ZipFile::SetLastFailure(const ZipFailure& failure) const
{
    state_->failure = failure;
}

} // namespace orvstorage
