#include <sources/detail/StoredNotes.h>

#include <sources/detail/NoteFormat.h>

#include <orvcore/text/Strings.h>
#include <orvcore/text/shared/HashMixer.h>
#include <orvcore/text/shared/LittleEndian.h>

#include <algorithm>

namespace orvcapsule::detail {

// The file, all numbers 8 bytes, little-endian:
// - the number of notes, then one row of four numbers for each, ascending by the first:
// - a hash of the note's subject, its offset behind the table, its size, a hash of its bytes;
// - the notes (NoteFormat.h).
//
// Everything read from it is taken for damaged: it lies in a temporary folder, and a crash may leave it half written.
// The table is bounded by the file's size before memory is taken, and a note counts only with its checksum.

namespace {

constexpr std::size_t kNumber = sizeof(std::uint64_t); // every number in a table
constexpr std::size_t kPlaceSize = 4 * kNumber;
// 128 MB of table; a folder with more packages is listed without notes.
constexpr std::uint64_t kMostNotes = 4'000'000;
// Above the fields of the largest definition (8 MiB of text, two bytes a character in an entry).
constexpr std::uint64_t kLargestNote = std::uint64_t{64} << 20;

std::uint64_t HashOf(std::string_view bytes)
{
    return orvcore::LoadLittleEndian(orvcore::HashMixer::Of(bytes).bytes.data(), kNumber);
}

} // namespace

std::string TableOfNotes(std::string_view notes)
{
    std::vector<StoredNotes::Place> table;
    std::u8string_view subject;
    std::string_view rest;
    for (std::string_view left = notes; !left.empty();) {
        const char* const start = left.data();
        if (!TakeNote(left, subject, rest)) {
            break;
        }
        const std::string_view note(start, static_cast<std::size_t>(rest.data() + rest.size() - start));
        const auto offset = static_cast<std::uint64_t>(start - notes.data());
        table.push_back({HashOf(orvcore::AsNarrow(subject)), offset, note.size(), HashOf(note)});
    }
    std::sort(table.begin(), table.end(), [](const auto& one, const auto& other) { return one.hash < other.hash; });
    std::string bytes;
    orvcore::AppendLittleEndian(bytes, table.size(), kNumber);
    for (const StoredNotes::Place& place : table) {
        for (const std::uint64_t number : {place.hash, place.offset, place.size, place.checksum}) {
            orvcore::AppendLittleEndian(bytes, number, kNumber);
        }
    }
    return bytes;
}

StoredNotes::StoredNotes(const std::filesystem::path& path)
{
    using orvcore::detail::NativeFile;
    std::error_code error; // what cannot be read is not known
    file_ = NativeFile::Open(path, NativeFile::Mode::Read, error);
    const std::uint64_t size = error ? 0 : file_.Size(error);
    char counted[kNumber];
    if (size < kNumber || file_.ReadAt(0, counted, kNumber, error) != kNumber) {
        return;
    }
    const std::uint64_t count = orvcore::LoadLittleEndian(counted, kNumber);
    if (count > kMostNotes || count > (size - kNumber) / kPlaceSize) {
        return;
    }
    std::vector<char> bytes(static_cast<std::size_t>(count) * kPlaceSize);
    if (file_.ReadAt(kNumber, bytes.data(), bytes.size(), error) != bytes.size()) {
        return;
    }
    notesStart_ = kNumber + bytes.size();
    notesSize_ = size - notesStart_;
    table_.resize(static_cast<std::size_t>(count));
    const char* at = bytes.data();
    for (Place& place : table_) {
        for (std::uint64_t* number : {&place.hash, &place.offset, &place.size, &place.checksum}) {
            *number = orvcore::LoadLittleEndian(at, kNumber);
            at += kNumber;
        }
    }
}

std::string StoredNotes::Find(std::u8string_view subject) const
{
    const std::uint64_t hash = HashOf(orvcore::AsNarrow(subject));
    const auto isLess = [](const Place& place, std::uint64_t wanted) { return place.hash < wanted; };
    auto place = std::lower_bound(table_.begin(), table_.end(), hash, isLess);
    // Two subjects may have one hash, so the subject in the note decides.
    for (; place != table_.end() && place->hash == hash; ++place) {
        const std::string note = Read(*place);
        std::string_view left = note;
        std::u8string_view noted;
        std::string_view rest;
        if (TakeNote(left, noted, rest) && noted == subject) {
            return std::string(rest);
        }
    }
    return {};
}

std::string StoredNotes::Read(const Place& place) const
{
    if (place.size > kLargestNote || place.offset > notesSize_ || place.size > notesSize_ - place.offset) {
        return {};
    }
    std::string note(static_cast<std::size_t>(place.size), '\0');
    std::error_code error;
    // ReadAt has no position that threads would share, so workers read at one time without a lock.
    const bool isWhole = file_.ReadAt(notesStart_ + place.offset, note.data(), note.size(), error) == note.size();
    return isWhole && HashOf(note) == place.checksum ? note : std::string();
}

} // namespace orvcapsule::detail
