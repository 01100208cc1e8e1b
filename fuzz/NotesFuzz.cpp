// Any damage to the notes that a listing keeps of the packages it read: reading them must not crash, hang or take more
// memory than they have, and what is recalled from them can be saved and recalled as the same again.
#include <fuzz/Patches.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/Paths.h>
#include <orvcore/host/DebugSettings.h>
#include <orvcore/text/Guid.h>
#include <package/Workspace.h>
#include <sources/detail/ListingNotes.h>
#include <sources/detail/NoteFormat.h>
#include <sources/detail/StoredNotes.h>

#include <boost/make_shared.hpp>

#include <cstdio>
#include <cstdlib>
#include <set>

namespace {

using namespace orvcapsule;

using Notes = std::vector<detail::NotedEntry>;

[[noreturn]] void Fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

// A place that no run before this one has left notes of.
detail::ListingNotes ListedNotes()
{
    static const orvcore::UTF8String place = orvcore::ToUTF8(orvcore::Guid::Create().ToString());
    return {"fuzz", place, [] { return false; }};
}

Notes MakeNotes()
{
    Notes notes;
    for (int i = 0; i < 3; ++i) {
        auto entry = boost::make_shared<CapsuleEntry>();
        entry->path = orvcore::ToUTF8("/templates/" + std::to_string(i) + ".zelt");
        entry->name = u"Title";
        entry->capsuleID = u"id";
        entry->usedFonts = {u"Font One", u"Font Two"};
        entry->tags = {u"tag", u"字幕"};
        detail::NotedFile state;
        state.facts.kind = orvcore::FileKind::File;
        state.facts.size = 1000;
        state.isKnown = true;
        notes.push_back({entry, state});
    }
    return notes;
}

struct FileOfThisRun {
    ~FileOfThisRun()
    {
        std::error_code ignored;
        orvcore::RemoveTree(path, ignored);
    }
    const std::filesystem::path path;
};

// The file of notes in the working folder, made by an object of its own.
const std::filesystem::path& File()
{
    static const FileOfThisRun file = {[] {
        const auto folder = orvcore::PathFromUTF8(GetTempLocalDirectory());
        orvcore::EnsureDirectory(folder);
        orvcore::DebugSettings::SetInt("ORV.entrysettletime", 0);
        std::set<std::filesystem::path> before;
        for (const auto& each : std::filesystem::directory_iterator(folder)) {
            before.insert(each.path());
        }
        const Notes notes = MakeNotes();
        ListedNotes().Save({&notes[0], &notes[1], &notes[2]});
        for (const auto& each : std::filesystem::directory_iterator(folder)) {
            if (each.path().extension() == ".notes" && before.count(each.path()) == 0) {
                return each.path();
            }
        }
        return std::filesystem::path();
    }()};
    return file.path;
}

void WriteFile(const std::string& notes)
{
    const std::string bytes = detail::TableOfNotes(notes) + notes;
    orvcore::WriteBufferToFile(File(), bytes.data(), bytes.size());
}

// What is recalled of the packages that the records name, as if each were as it was.
Notes Recall(std::string_view records)
{
    Notes notes;
    const detail::ListingNotes known = ListedNotes();
    std::u8string_view path;
    std::string_view rest;
    while (!records.empty() && detail::TakeNote(records, path, rest)) {
        auto entry = boost::make_shared<CapsuleEntry>();
        entry->path = path;
        detail::NotedFile state;
        state.facts.kind = orvcore::FileKind::File;
        if (detail::TakeState(rest, state) && known.Recall(*entry, state)) {
            notes.push_back({entry, state});
        }
    }
    return notes;
}

std::string Written(const Notes& notes)
{
    std::string records;
    for (const detail::NotedEntry& each : notes) {
        detail::AppendNote(records, *each.entry, each.noted);
    }
    return records;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string whole = Written(MakeNotes());
    if (File().empty()) {
        Fail("there is no file of notes");
    }
    const std::string damaged = fuzz::Patched(whole, data, size);
    WriteFile(damaged);
    const std::string written = Written(Recall(damaged));
    WriteFile(written);
    const std::string again = Written(Recall(written));
    if (again != written) {
        Fail("notes are not recalled as they were written");
    }
    if (size == 0 && again != whole) {
        Fail("notes without damage are not recalled");
    }
    return 0;
}
