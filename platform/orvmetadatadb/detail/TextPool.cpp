#include <orvmetadatadb/detail/TextPool.h>

#include <orvcore/text/shared/TextFold.h>

#include <algorithm>

namespace orvmetadatadb::detail {

namespace {

// A byte that stands in no UTF-8 text.
constexpr char kSeparator = '\xFF';

} // namespace

TextPool::TextPool()
{
    Clear();
}

void TextPool::Clear()
{
    texts_.Clear();
    uses_.clear();
    folded_.clear();
    starts_.assign(1, 0);
    Add({}); // becomes kNone
}

TextPool::Id TextPool::Add(std::u16string_view text)
{
    const Id id = texts_.Add(text);
    if (id == uses_.size()) {
        // Folded once for each distinct text, however many rows it has.
        folded_ += orvcore::AsNarrow(orvcore::FoldText(text));
        folded_ += kSeparator;
        starts_.push_back(folded_.size());
        uses_.push_back(0);
    }
    return id;
}

// One search over all folded texts at once. No hit spans two of them: neither a folded text nor a folded term holds the
// separator.
template <class Visit>
void TextPool::Scan(std::u8string_view term, Visit&& visit) const
{
    const std::string_view needle = orvcore::AsNarrow(term);
    Id id = 0;
    for (std::size_t at = folded_.find(needle); at != std::string::npos; at = folded_.find(needle, at)) {
        while (End(id) <= at) {
            ++id;
        }
        // The hits come in the order of the texts, so `id` only moves forward: the whole pass takes time linear in the
        // texts and their hits. Behind a hit that counts the rest of its text is passed over.
        at = uses_[id] == 0 || visit(id, at - starts_[id]) ? End(id) : at + 1;
    }
}

bool TextPool::FindContaining(std::u8string_view term, std::vector<std::uint8_t>& hits) const
{
    bool any = false;
    Scan(term, [&](Id id, std::size_t) {
        hits[id] = 1;
        any = true;
        return true;
    });
    return any;
}

std::vector<TextPool::Candidate> TextPool::Candidates(std::u8string_view start) const
{
    std::vector<Candidate> candidates;
    if (start.empty()) {
        for (Id id = 0; id < Size(); ++id) {
            if (uses_[id] != 0) {
                candidates.push_back({id, false});
            }
        }
        return candidates;
    }
    Scan(start, [&](Id id, std::size_t offset) {
        const std::string_view text(folded_.data() + starts_[id], End(id) - starts_[id] - 1);
        if (!orvcore::IsWordStart(orvcore::AsUTF8(text), offset)) {
            return false;
        }
        candidates.push_back({id, offset != 0});
        return true;
    });
    return candidates;
}

std::vector<TextPool::Id> TextPool::FindSimilar(std::u8string_view start, std::size_t count) const
{
    std::vector<Candidate> candidates = Candidates(start);
    const auto before = [this](const Candidate& a, const Candidate& b) {
        if (a.startsInside != b.startsInside) {
            return b.startsInside;
        }
        const std::u16string_view left = texts_[a.id];
        const std::u16string_view right = texts_[b.id];
        return left.size() != right.size() ? left.size() < right.size() : left < right;
    };
    // Of a short beginning nearly all texts are candidates, of which a host shows a few: only those are brought into
    // order.
    const std::size_t kept = std::min(count, candidates.size());
    const auto end = candidates.begin() + static_cast<std::ptrdiff_t>(kept);
    std::partial_sort(candidates.begin(), end, candidates.end(), before);
    std::vector<Id> ids;
    ids.reserve(kept);
    std::for_each(candidates.begin(), end, [&](const Candidate& candidate) { ids.push_back(candidate.id); });
    return ids;
}

} // namespace orvmetadatadb::detail
