#include <orvmetadatadb/detail/TextPool.h>

#include <orvcore/TextFold.h>

#include <algorithm>

namespace orvmetadatadb::detail {

namespace {

constexpr char kSeparator = '\xFF';

} // namespace

TextPool::TextPool()
{
    Clear();
}

void TextPool::Clear()
{
    m_texts.Clear();
    m_uses.clear();
    m_folded.clear();
    m_starts.assign(1, 0);
    Add({}); // becomes kNone
}

TextPool::Id TextPool::Add(std::u16string_view text)
{
    const Id id = m_texts.Add(text);
    if (id == m_uses.size()) {
        m_folded += orvcore::AsNarrow(orvcore::FoldText(text));
        m_folded += kSeparator;
        m_starts.push_back(m_folded.size());
        m_uses.push_back(0);
    }
    return id;
}

template <class Visit>
void TextPool::Scan(std::u8string_view term, Visit&& visit) const
{
    const std::string_view needle = orvcore::AsNarrow(term);
    Id id = 0;
    for (std::size_t at = m_folded.find(needle); at != std::string::npos; at = m_folded.find(needle, at)) {
        while (End(id) <= at) {
            ++id;
        }
        at = m_uses[id] == 0 || visit(id, at - m_starts[id]) ? End(id) : at + 1;
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
            if (m_uses[id] != 0) {
                candidates.push_back({id, false});
            }
        }
        return candidates;
    }
    Scan(start, [&](Id id, std::size_t offset) {
        const std::string_view text(m_folded.data() + m_starts[id], End(id) - m_starts[id] - 1);
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
        const std::u16string_view left = m_texts[a.id];
        const std::u16string_view right = m_texts[b.id];
        return left.size() != right.size() ? left.size() < right.size() : left < right;
    };
    const std::size_t kept = std::min(count, candidates.size());
    const auto end = candidates.begin() + static_cast<std::ptrdiff_t>(kept);
    std::partial_sort(candidates.begin(), end, candidates.end(), before);
    std::vector<Id> ids;
    ids.reserve(kept);
    std::for_each(candidates.begin(), end, [&](const Candidate& candidate) { ids.push_back(candidate.id); });
    return ids;
}

} // namespace orvmetadatadb::detail
