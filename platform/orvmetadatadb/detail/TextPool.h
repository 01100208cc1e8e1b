#pragma once

#include <orvcore/text/Strings.h>
#include <orvmetadatadb/detail/StringTable.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvmetadatadb::detail {

/// The distinct indexed texts, as written and folded, and how many rows use each. The folded forms lie in one piece of
/// memory, so that looking for a term is one pass over it. Not thread-safe.
class TextPool {
public:
    using Id = StringTable::Id;

    /// The number of the text that is never in use and never hit: rows that are gone carry it.
    static constexpr Id kNone = 0;

    TextPool();

    /// The number of `text`, which is added, unused, when it is new.
    Id Add(std::u16string_view text);
    std::u16string_view operator[](Id id) const noexcept
    {
        return texts_[id];
    }
    std::size_t Size() const noexcept
    {
        return texts_.Size();
    }
    void Clear();

    void AddUse(Id id) noexcept
    {
        ++uses_[id];
    }
    void DropUse(Id id) noexcept
    {
        --uses_[id];
    }

    /// Sets `hits[id]` to 1 for every used text whose folded form contains `term` (folded, not empty). `hits` holds
    /// `Size()` zeros. The result says whether there was one.
    bool FindContaining(std::u8string_view term, std::vector<std::uint8_t>& hits) const;

    /// The first `count` of the used texts with a word that begins with `start` (folded): texts that begin with it
    /// before others, then shorter ones, then in order of code units.
    std::vector<Id> FindSimilar(std::u8string_view start, std::size_t count) const;

private:
    struct Candidate {
        Id id;
        bool startsInside;
    };

    std::size_t End(Id id) const noexcept
    {
        return starts_[id + 1];
    }
    /// Calls `visit(id, offset in the text)` at each place of `term`; on true the search goes on with the next text.
    template <class Visit>
    void Scan(std::u8string_view term, Visit&& visit) const;
    std::vector<Candidate> Candidates(std::u8string_view start) const;

    StringTable texts_;
    std::vector<std::uint32_t> uses_;
    std::string folded_;              // each text followed by a byte that no folded text holds
    std::vector<std::size_t> starts_; // one more than there are texts
};

} // namespace orvmetadatadb::detail
