#include <orvstorage/ZipFile.h>

#include <orvstorage/detail/ZipState.h>
#include <orvstorage/detail/reading/EntryReader.h>
#include <orvstorage/detail/unpacking/EntryUnpacking.h>
#include <orvstorage/detail/unpacking/Unpacker.h>

#include <algorithm>

// The reading half of ZipFile; the writing half is ZipFileWrite.cpp. Each public call is one State::Run: it names the
// operation once, and every step below returns a ZipFault that knows only what went wrong. Run joins the two into the
// failure that GetLastFailure answers. So no step below has to know the archive's path or what the caller asked for.

namespace orvstorage {

using detail::ZipFault;

namespace {

// Reads what the plan would unpack, and what folders have of content; adds those that fail, and tells how the others
// begin.
void TestContents(const detail::ZipArchive& archive, const ZipLimits& limits, const detail::UnpackPlan& plan,
                  const std::function<void(std::size_t, std::string_view)>& tell, std::vector<ZipFault>& faults)
{
    const auto test = [&](std::size_t index) {
        std::string head;
        if (ZipFault fault = detail::TestEntry(archive, index, &head)) {
            faults.push_back(std::move(fault));
        } else if (tell) {
            tell(index, head);
        }
    };
    for (const detail::UnpackPlan::File& file : plan.files) {
        test(file.index);
    }
    const auto& entries = archive.Entries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].kind == detail::EntryKind::Directory && // what is refused was told among the refusals
            detail::EntryReader::Judge(entries[i], limits) == ZipError::None) {
            test(i);
        }
    }
}

} // namespace

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
    return state.Run(ZipAction::Read, entryName, [&]() -> ZipFault {
        auto index = state.Find(entryName);
        if (!index) {
            return index.Fault();
        }
        const detail::ArchiveEntry& entry = state.archive->Entries()[*index];
        // The declared size; the reader sees to it that no more comes than was declared.
        if (entry.shown.size > std::min(maxSize, state.limits.maxItemSize)) {
            return {ZipError::EntryTooLarge};
        }
        auto reader = detail::EntryReader::Open(state.archive->Handle(), *index, entry);
        return reader ? reader->ReadAll(content) : reader.Fault();
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
    detail::ByteProgress asked(progress, opaque);
    return state.RunAsking(ZipAction::Unpack, entryName, asked, [&] {
        auto index = state.Find(entryName);
        return index ? detail::UnpackToFile(*state.archive, *index, destination, asked) : index.Fault();
    });
}

bool ZipFile::UnzipOver(std::u8string_view entryName, const std::filesystem::path& destination) const
{
    return UnzipOver(entryName, destination, {}, nullptr);
}

bool ZipFile::UnzipOver(std::u8string_view entryName, const std::filesystem::path& destination,
                        const ZipProgress& progress, void* opaque) const
{
    State& state = *state_;
    detail::ByteProgress asked(progress, opaque);
    return state.RunAsking(ZipAction::Unpack, entryName, asked, [&] {
        auto index = state.Find(entryName);
        return index ? detail::UnpackOver(*state.archive, *index, destination, asked) : index.Fault();
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
    detail::ByteProgress asked(progress, opaque);
    return state.RunAsking(ZipAction::Unpack, {}, asked, [&] {
        auto plan = state.Plan();
        if (!plan) {
            return plan.Fault();
        }
        const auto ifExists = overwrite ? orvcore::IfExists::Overwrite : orvcore::IfExists::Keep;
        // All that may be unpacked is there when this succeeds; that something was refused makes the call fail all the
        // same.
        const ZipFault fault = detail::Unpack(*state.archive, *plan, directory, ifExists, asked);
        return fault || plan->refused.empty() ? fault : plan->refused.front();
    });
}

std::vector<ZipEntry> ZipFile::GetEntries() const
{
    State& state = *state_;
    std::vector<ZipEntry> entries;
    state.Run(ZipAction::Read, {}, [&]() -> ZipFault {
        auto archive = state.Open();
        if (!archive) {
            return archive.Fault();
        }
        for (const detail::ArchiveEntry& entry : (*archive)->Entries()) {
            entries.push_back(entry.shown);
        }
        return {};
    });
    return entries;
}

bool ZipFile::Contains(std::u8string_view entryName) const
{
    // A question must not wipe out why the operation before it failed.
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
    std::vector<ZipFault> faults;
    state.Run(ZipAction::Unpack, {}, [&] {
        auto plan = state.Plan();
        if (!plan) {
            faults.push_back(plan.Fault());
        } else {
            faults = std::move(plan->refused);
            if (readContents) {
                TestContents(*state.archive, state.limits, *plan, tell, faults);
            }
        }
        return faults.empty() ? ZipFault() : faults.front();
    });
    std::vector<ZipFailure> failures;
    const ZipFailure operation{ZipError::None, ZipAction::Unpack, state.path, {}, {}};
    // Run has filled in the first fault alone; a list is told with each one complete.
    for (const ZipFault& fault : faults) {
        failures.push_back(fault.In(operation));
    }
    return failures;
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
