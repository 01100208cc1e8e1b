#include <sources/detail/ListingNotes.h>

#include <capsule/Capsule.h>
#include <package/Workspace.h>
#include <sources/detail/NoteFormat.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/Files.h>
#include <orvcore/host/Application.h>
#include <orvcore/host/DebugSettings.h>
#include <orvcore/text/shared/HashMixer.h>

#include <algorithm>

namespace orvcapsule::detail {

namespace fs = std::filesystem;

namespace {

// Grows with every change of what an entry says of the same package.
constexpr std::uint64_t kFormat = 1;

// The coarsest times that a file system keeps are two seconds apart.
constexpr std::int64_t kSettleMilliseconds = 2000;

constexpr std::size_t kChecksumSize = 16;
constexpr std::uint64_t kLargestFile = std::uint64_t{512} << 20;

fs::path FileFor(const std::string& sourceID, const orvcore::UTF8String& place)
{
    orvcore::HashMixer mixer;
    mixer.Add("entries")
        .Add(kFormat)
        .Add(Capsule::GetCurrentAPIVersion()) // a newer reader reads what an older one refused
        .Add(sourceID)
        .Add(orvcore::Application::GetLanguage())
        .Add(place);
    const fs::path folder = orvcore::PathFromUTF8(GetTempLocalDirectory());
    return folder.empty() ? fs::path() : folder / (mixer.GetResult().ToString() + ".notes");
}

std::string ChecksumOf(std::string_view bytes)
{
    const orvcore::Guid sum = orvcore::HashMixer().Add(bytes).GetResult();
    return {sum.bytes.begin(), sum.bytes.end()};
}

} // namespace

ListingNotes::ListingNotes(const std::string& sourceID, const orvcore::UTF8String& place, std::function<bool()> stop)
    : sourceID_(sourceID)
    , place_(place)
    , file_(FileFor(sourceID, place))
    , stop_(std::move(stop))
{
    const std::int64_t settle = orvcore::DebugSettings::GetInt("ORV.entrysettletime", kSettleMilliseconds);
    isUsed_ = settle >= 0 && !file_.empty();
    settled_ = std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now()) -
               std::chrono::milliseconds(settle);
    if (isUsed_) {
        std::error_code ignored; // without notes each package is read
        content_ = orvcore::ReadWholeFile(file_, kLargestFile, ignored);
    }
    std::string_view bytes = content_;
    const std::string_view checksum = bytes.substr(0, std::min(bytes.size(), kChecksumSize));
    bytes.remove_prefix(checksum.size());
    if (bytes.empty() || checksum != ChecksumOf(bytes)) {
        return;
    }
    std::u8string_view subject;
    std::string_view rest;
    while (!bytes.empty() && !stop_() && TakeNote(bytes, subject, rest)) {
        notes_.emplace(subject, rest);
    }
}

bool ListingNotes::Recall(CapsuleEntry& entry, NotedFile& state) const
{
    const auto found = notes_.find(state.SubjectFor(entry));
    if (found == notes_.end()) {
        return false;
    }
    std::string_view fields = found->second;
    NotedFile stored = state; // nothing but files is noted
    if (!TakeState(fields, stored) || stored.facts != state.facts) {
        return false;
    }
    CapsuleEntry filled = entry;
    if (!ReadFields(fields, filled)) {
        return false;
    }
    entry = std::move(filled);
    state = stored;
    state.isKnown = true;
    ++recalled_;
    return true;
}

void ListingNotes::Save(const std::vector<boost::shared_ptr<CapsuleEntry>>& entries,
                        const std::vector<NotedFile>& states) const
{
    const auto known = static_cast<std::size_t>(
        std::count_if(states.begin(), states.end(), [](const NotedFile& state) { return state.isKnown; }));
    const bool nothingNew = recalled_ == known && recalled_ == notes_.size();
    // A language that changed meanwhile leaves names of both.
    if (!isUsed_ || nothingNew || file_ != FileFor(sourceID_, place_)) {
        return;
    }
    std::string bytes;
    for (std::size_t i = 0; i < entries.size() && !stop_(); ++i) {
        const NotedFile& state = states[i];
        if (state.isKnown && state.facts.modified < settled_ && state.facts.replaced < settled_) {
            AppendNote(bytes, *entries[i], state);
        }
    }
    const std::string checksum = ChecksumOf(bytes);
    if (bytes.empty() || stop_() || std::string_view(content_).starts_with(checksum)) {
        return;
    }
    std::error_code error; // a listing without this file is a slower one
    orvcore::EnsureDirectory(file_.parent_path(), error);
    orvcore::AtomicFile file(file_);
    if (file.Write(checksum.data(), checksum.size(), error) && file.Write(bytes.data(), bytes.size(), error)) {
        static_cast<void>(file.Commit(orvcore::AtomicFile::Durability::Cached, error));
    }
}

} // namespace orvcapsule::detail
