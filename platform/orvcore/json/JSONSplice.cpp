#include <orvcore/json/JSONSplice.h>

#include <orvcore/json/JSONTextWriter.h>

#include <algorithm>

// An edit is a place (bytes to replace, none for an insertion) and a text, both in terms of the text as it was
// outlined. The edits lie sorted by place, so one pass from the front copies what is between them. At one place an
// insertion comes before a replacement, because it ends earlier; insertions of members come by their keys, those of
// elements in the order of the calls.

namespace orvcore::serialization {

namespace {

// The white space before `offset`, back to the bracket or comma it follows.
std::string SpaceBefore(std::string_view text, std::size_t offset)
{
    const std::size_t last = text.substr(0, offset).find_last_not_of(" \t\r\n");
    return std::string(text.substr(last + 1, offset - last - 1));
}

bool Ascends(const JSONOutline& a, const JSONOutline& b)
{
    return a.key < b.key;
}

// The member in front of which a new one stands; none where the keys are in no order or the new one is the last.
const JSONOutline* PlaceOf(const std::vector<JSONOutline>& members, std::string_view key)
{
    // Keys in no order were put there by hand, in an order that means something to somebody.
    if (!std::is_sorted(members.begin(), members.end(), Ascends)) {
        return nullptr;
    }
    const auto next =
        std::find_if(members.begin(), members.end(), [&](const auto& member) { return member.key > key; });
    return next != members.end() ? &*next : nullptr;
}

} // namespace

JSONSplice::JSONSplice(std::string text)
    : text_(std::move(text))
    , root_(ReadOutline(text_))
{
}

// Everything behind a change moves, so the outline is read again: once for all edits, since definitions have thousands
// of texts.
void JSONSplice::MakeEdits() const
{
    if (edits_.empty()) {
        return;
    }
    std::string text;
    std::size_t done = 0; // the bytes of the old text that are passed
    for (const auto& [place, edit] : edits_) {
        if (place.begin < done) {
            continue; // inside a value that is replaced
        }
        text.append(text_, done, place.begin - done);
        // Between empty brackets only another insertion at the same place can have ended here, so this one needs a
        // comma.
        text.append(edit.intoEmpty && place.begin == done ? "," : "").append(edit.text);
        done = place.end;
    }
    text.append(text_, done);
    edits_.clear();
    text_ = std::move(text);
    // What was put in is judged here, after the change: a value that is no JSON makes the pass throw, and the object is
    // of no use then.
    root_ = ReadOutline(text_);
}

// The last edit of one place counts, as if each had been made at once.
void JSONSplice::PutOnly(Place place, Edit edit)
{
    edits_.erase(place);
    edits_.emplace(std::move(place), std::move(edit));
}

void JSONSplice::Replace(const JSONOutline& value, std::string_view json)
{
    PutOnly({value.begin, value.end, {}}, {std::string(json), false});
}

// A new member looks like its neighbours: it takes over the white space before their keys and values.
void JSONSplice::SetMember(const JSONOutline& object, std::string_view key, std::string_view json)
{
    if (const JSONOutline* member = object.Find(key)) {
        Replace(*member, json);
        return;
    }
    const auto put = [&](std::size_t at, std::string text) {
        PutOnly({at, at, std::string(key)}, {std::move(text), object.children.empty()});
    };
    std::string member = ToJSON(key) + ':';
    if (object.children.empty()) {
        put(object.begin + 1, member.append(json));
    } else if (const JSONOutline* next = PlaceOf(object.children, key)) {
        member.append(SpaceBefore(text_, next->begin)).append(json);
        put(next->keyBegin, member + ',' + SpaceBefore(text_, next->keyBegin));
    } else {
        const JSONOutline& last = object.children.back();
        member.insert(0, ',' + SpaceBefore(text_, last.keyBegin));
        put(last.end, member.append(SpaceBefore(text_, last.begin)).append(json));
    }
}

void JSONSplice::InsertElement(const JSONOutline& array, std::size_t index, std::string_view json)
{
    const auto put = [&](std::size_t at, std::string text) {
        edits_.emplace(Place{at, at, {}}, Edit{std::move(text), array.children.empty()});
    };
    const std::string element(json);
    if (array.children.empty()) {
        put(array.begin + 1, element);
    } else if (index < array.children.size()) {
        const std::size_t begin = array.children[index].begin;
        put(begin, element + ',' + SpaceBefore(text_, begin));
    } else {
        const JSONOutline& last = array.children.back();
        put(last.end, ',' + SpaceBefore(text_, last.begin) + element);
    }
}

std::string ToJSON(std::string_view text)
{
    JSONTextWriter writer;
    writer.String(text);
    return ToNarrow(writer.Take());
}

std::string ToJSON(double number)
{
    JSONTextWriter writer;
    writer.Double(number);
    return ToNarrow(writer.Take());
}

} // namespace orvcore::serialization
