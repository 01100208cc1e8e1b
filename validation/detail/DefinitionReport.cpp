#include <validation/detail/DefinitionReport.h>

#include <validation/detail/DefinitionJudging.h>

#include <capsule/DefinitionKeys.h>
#include <orvcore/text/Printable.h>
#include <package/PackageNames.h>

#include <algorithm>

// A finding is gathered with two offsets into the text and nothing else of its place. Line, column, pointer and the
// record it lies in are worked out in Finish, for at most two hundred findings: one pass over the text for the lines,
// and a binary search on each level of the outline for the rest. Worked out at once, a hostile definition's hundred
// thousand mistakes would each cost a pass.

namespace orvcapsule::detail {

namespace {

using orvcore::serialization::JSONOutline;

// The values from the root's member to the one that begins at `begin`.
// Children stand in the order of the text and do not overlap, so the one that holds an offset is the last that begins
// at or before it.
std::vector<const JSONOutline*> WayTo(const JSONOutline& root, std::size_t begin)
{
    std::vector<const JSONOutline*> way;
    for (const JSONOutline* at = &root; at->begin != begin;) {
        const auto next =
            std::upper_bound(at->children.begin(), at->children.end(), begin,
                             [](std::size_t place, const JSONOutline& child) { return place < child.begin; });
        at = &*std::prev(next);
        way.push_back(at);
    }
    return way;
}

void AppendStep(std::string& pointer, std::string_view step)
{
    pointer += '/';
    for (const char c : step) {
        // RFC 6901.
        pointer += c == '~' ? std::string("~0") : c == '/' ? std::string("~1") : std::string(1, c);
    }
}

std::string PointerOf(const JSONOutline& root, const std::vector<const JSONOutline*>& way)
{
    std::string pointer;
    const JSONOutline* parent = &root;
    for (const JSONOutline* value : way) {
        AppendStep(pointer, parent->Is(JSONOutline::Kind::kArray) ? std::to_string(value - parent->children.data())
                                                                  : value->key);
        parent = value;
    }
    return pointer;
}

// The record that a finding lies in, as a person would call it.
std::string SubjectOf(std::string_view text, const std::vector<const JSONOutline*>& way)
{
    if (way.empty()) {
        return {};
    }
    const std::string_view top = way.front()->key;
    if (top == CAPSULE_SOURCE_INFO_STR) {
        return "composition: ";
    }
    if (way.size() < 2 || (top != CAPSULE_SOURCE_INFO_LOC_STR && top != CAPSULE_CONTROLS_STR)) {
        return {};
    }
    if (top == CAPSULE_SOURCE_INFO_LOC_STR) {
        return "composition for " + Quoted(way[1]->key) + ": ";
    }
    const JSONOutline* id = way[1]->Find(CAPSULE_CONTROL_ID_STR);
    const bool isNamed = id != nullptr && id->Is(JSONOutline::Kind::kString);
    return "control " + std::to_string(way[1] - way.front()->children.data() + 1) +
           (isNamed ? " (" + Quoted(text.substr(id->begin + 1, id->end - id->begin - 2)) + "): " : ": ");
}

} // namespace

DefinitionReport::DefinitionReport(std::string_view text, const PlacedValue& root)
    : text_(text)
    , root_(root.Outlined())
{
}

void DefinitionReport::At(const PlacedValue& value, Note note)
{
    const std::size_t begin = value.Outlined().begin;
    Add({{note.severity,
          std::string(note.code),
          std::move(note.text),
          {},
          {},
          0,
          0,
          Found(value),
          std::move(note.expected),
          std::move(note.nearest)},
         begin,
         begin,
         {}});
}

void DefinitionReport::AtKey(const PlacedValue& member, Note note)
{
    const JSONOutline& outline = member.Outlined();
    Add({{note.severity,
          std::string(note.code),
          std::move(note.text),
          {},
          {},
          0,
          0,
          Quoted(outline.key),
          std::move(note.expected),
          std::move(note.nearest)},
         outline.keyBegin,
         outline.begin,
         {}});
}

void DefinitionReport::Absent(const PlacedValue& object, std::string_view key, Note note)
{
    const std::size_t begin = object.Outlined().begin;
    Add({{note.severity,
          std::string(note.code),
          std::move(note.text),
          {},
          {},
          0,
          0,
          {},
          std::move(note.expected),
          std::move(note.nearest)},
         begin,
         begin,
         std::string(key)});
}

std::string DefinitionReport::Found(const PlacedValue& value) const
{
    const JSONOutline& outline = value.Outlined();
    // White space becomes one space, and the text is shortened first: a finding is one line in a terminal, and a value
    // may be megabytes.
    std::string found;
    for (const char c : orvcore::Shortened(text_.substr(outline.begin, outline.end - outline.begin))) {
        const bool isSpace = c == '\n' || c == '\r' || c == '\t' || c == ' ';
        if (!isSpace || found.empty() || found.back() != ' ') {
            found += isSpace ? ' ' : c;
        }
    }
    return found;
}

void DefinitionReport::Add(Pending pending)
{
    // Counted also when not kept: the number of refusals decides whether more reasons are looked for.
    const bool isKept = HasRoom(pending.finding.severity);
    ++(pending.finding.severity == Severity::Error ? errors_ : warnings_);
    refusals_ += IsRefusal(pending.finding.code) ? 1U : 0U;
    if (isKept) {
        pending_.push_back(std::move(pending));
    }
}

void DefinitionReport::Place(Pending& pending) const
{
    const auto way = WayTo(root_, pending.begin);
    Finding& finding = pending.finding;
    finding.entry = kJSONFileName;
    finding.text.insert(0, SubjectOf(text_, way));
    finding.pointer = PointerOf(root_, way);
    if (!pending.absent.empty()) {
        AppendStep(finding.pointer, pending.absent);
    }
}

void DefinitionReport::Finish(FindingList& to)
{
    // Stable, so that several findings at one place stay in the order of the checks.
    std::stable_sort(pending_.begin(), pending_.end(),
                     [](const Pending& a, const Pending& b) { return a.offset < b.offset; });
    orvcore::serialization::TextPlace place;
    std::size_t done = 0;
    for (Pending& pending : pending_) {
        place.Pass(text_.substr(done, pending.offset - done));
        done = pending.offset;
        pending.finding.line = place.line;
        pending.finding.column = place.column;
        Place(pending);
        to.Add(std::move(pending.finding));
    }
    // Those that were not kept here must not be lost to the count.
    for (std::size_t more = Findings::kMostKept; more < errors_; ++more) {
        to.Count(Severity::Error);
    }
    for (std::size_t more = Findings::kMostKept; more < warnings_; ++more) {
        to.Count(Severity::Warning);
    }
    pending_.clear();
}

} // namespace orvcapsule::detail
