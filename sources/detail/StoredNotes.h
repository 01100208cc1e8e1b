#pragma once

#include <orvcore/files/shared/NativeFile.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace orvcapsule::detail {

/// The table that stands before these notes (NoteFormat.h) in a file of them: by a hash of its subject, where each note
/// lies, and a checksum of it.
std::string TableOfNotes(std::string_view notes);

/// A file of notes, of which only the table is read at once: a listing begins as fast with a hundred thousand notes as
/// with a hundred. What is damaged is not found. Find may be called from several threads at once.
class StoredNotes {
public:
    explicit StoredNotes(const std::filesystem::path& path);

    std::size_t Count() const noexcept
    {
        return table_.size();
    }
    /// The note of the subject without that; empty when there is none.
    std::string Find(std::u8string_view subject) const;

private:
    struct Place {
        std::uint64_t hash = 0;
        std::uint64_t offset = 0; // behind the table
        std::uint64_t size = 0;
        std::uint64_t checksum = 0;
    };
    friend std::string TableOfNotes(std::string_view notes);

    std::string Read(const Place& place) const;

    orvcore::detail::NativeFile file_;
    std::uint64_t notesStart_ = 0;
    std::uint64_t notesSize_ = 0;
    std::vector<Place> table_; ///< by hash
};

} // namespace orvcapsule::detail
