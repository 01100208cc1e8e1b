#include <sources/detail/ListingNotes.h>

#include <capsule/Capsule.h>
#include <package/Workspace.h>
#include <sources/detail/NoteFormat.h>
#include <sources/detail/StoredNotes.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/host/Application.h>
#include <orvcore/host/DebugSettings.h>
#include <orvcore/text/shared/HashMixer.h>

#include <algorithm>

namespace orvcapsule::detail {

// When a note is good: its file's size, time of change and system's change time are those noted, and the file lies
// under a name that stands for everything else an entry depends on (the format, the newest definition version that is
// read, the source, the language, the place). So no note is ever wrong for want of a version number inside.
//
// A file that changed less than two seconds before the listing is not noted: a second change in the same tick of a
// coarse clock would leave size and times as they are. Neither is one that could not be read whole, whose fault may
// have been the disk's.
//
// Several processes may list one place: each replaces the file in one step, and the last one stays. Nothing here is
// told to anybody when it fails.

namespace fs = std::filesystem;

namespace {

// Grows with every change of what an entry says of the same package.
constexpr std::uint64_t kFormat = 3;

// The coarsest times that a file system keeps are two seconds apart.
constexpr std::int64_t kSettleMilliseconds = 2000;

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
        notes_ = std::make_unique<const StoredNotes>(file_);
    }
}

ListingNotes::~ListingNotes() = default;

bool ListingNotes::Recall(CapsuleEntry& entry, NotedFile& state) const
{
    const std::string note = notes_ ? notes_->Find(state.SubjectFor(entry)) : std::string();
    std::string_view fields = note;
    NotedFile stored = state; // nothing but files is noted
    if (note.empty() || !TakeState(fields, stored) || stored.facts != state.facts) {
        return false;
    }
    // ReadFields may stop half-way in a damaged note; the entry changes only when all was read.
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

void ListingNotes::Save(const std::vector<const NotedEntry*>& entries)
{
    std::vector<const NotedEntry*> lasting;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(lasting), [this](const NotedEntry* each) {
        const NotedFile& noted = each->noted;
        return noted.isKnown && noted.facts.modified < settled_ && noted.facts.replaced < settled_;
    });
    const std::size_t known = notes_ ? notes_->Count() : 0;
    // Every note was used and every entry came from one: the file would be written as it is.
    const bool nothingNew = recalled_ == lasting.size() && recalled_ == known;
    // A language that changed meanwhile leaves names of both.
    if (!isUsed_ || lasting.empty() || nothingNew || file_ != FileFor(sourceID_, place_)) {
        return;
    }
    std::string notes;
    for (auto each = lasting.begin(); each != lasting.end() && !stop_(); ++each) {
        AppendNote(notes, *(*each)->entry, (*each)->noted);
    }
    if (stop_()) {
        return;
    }
    const std::string table = TableOfNotes(notes);
    std::error_code error; // a listing without this file is a slower one
    orvcore::EnsureDirectory(file_.parent_path(), error);
    orvcore::AtomicFile file(file_);
    if (file.Write(table.data(), table.size(), error) && file.Write(notes.data(), notes.size(), error)) {
        notes_.reset(); // not every system replaces a file that is open
        // Not flushed to the disk: a crash may cost the notes, whose checksums show it.
        static_cast<void>(file.Commit(orvcore::AtomicFile::Durability::Cached, error));
    }
}

} // namespace orvcapsule::detail
