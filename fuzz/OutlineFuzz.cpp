// A JSON text behind two bytes that choose an edit: the scanner must find the values that the reader reads, no more and
// no fewer, and an edit must change that one member and no other. Bytes behind the text must not count.
#include <orvcore/json/JSONSplice.h>
#include <orvcore/json/shared/JSONDocument.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

namespace json = orvcore::serialization;
using json::JSONOutline;
using json::JSONSplice;

[[noreturn]] void Fail(const char* what, std::string_view text)
{
    std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(text.size()), text.data());
    std::abort();
}

std::optional<json::JSONDocument> Read(std::string_view text, std::size_t room = 0)
{
    try {
        return json::JSONDocument::Parse(orvcore::AsUTF8(text), room);
    } catch (const json::json_parse_exception&) {
        return std::nullopt;
    }
}

JSONOutline::Kind KindOf(const json::JSONNode& node)
{
    using Kind = JSONOutline::Kind;
    switch (node.Kind()) {
    case json::JSONKind::kNull:
        return Kind::kNull;
    case json::JSONKind::kBool:
        return Kind::kBool;
    case json::JSONKind::kString:
        return Kind::kString;
    case json::JSONKind::kArray:
        return Kind::kArray;
    case json::JSONKind::kObject:
        return Kind::kObject;
    case json::JSONKind::kInt64:
    case json::JSONKind::kUInt64:
    case json::JSONKind::kDouble:
        break;
    }
    return Kind::kNumber;
}

std::u8string Printed(const json::JSONNode& node)
{
    return json::GetJSONUTF8String(node.ToTree(), false);
}

// Where it is parsed in place, the text goes on with itself.
void CompareInPlace(const std::optional<json::JSONDocument>& document, std::string_view text)
{
    std::string whole(text);
    whole.append(text).append(json::kJSONTextRoom, ']');
    const auto inPlace = Read(std::string_view(whole).substr(0, text.size()), whole.size() - text.size());
    if (document.has_value() != inPlace.has_value() ||
        (document && Printed(document->Root()) != Printed(inPlace->Root()))) {
        Fail("the bytes behind a text count", text);
    }
}

void Compare(const JSONOutline& outline, const json::JSONNode& node, std::string_view text)
{
    const auto children = node.Children();
    if (outline.kind != KindOf(node) || outline.key != node.Key() || outline.children.size() != children.size()) {
        Fail("the scanner finds other values than the reader", text);
    }
    if (children.empty()) {
        const auto alone = Read(text.substr(outline.begin, outline.end - outline.begin));
        if (!alone || Printed(alone->Root()) != Printed(node)) {
            Fail("a value stands elsewhere than the scanner says", text);
        }
    }
    for (std::size_t i = 0; i < children.size(); ++i) {
        Compare(outline.children[i], children[i], text);
    }
}

// Every value but the one under `key` of the object at `path` must be as before.
void CompareBut(const json::JSONNode& before, const json::JSONNode& after, const json::JSONNode* edited,
                std::string_view key, const std::string& text)
{
    const bool isEdited = &before == edited;
    const auto old = before.Children();
    const auto now = after.Children();
    const json::JSONNode* member = isEdited ? before.Find(key) : nullptr;
    if (before.Kind() != after.Kind() || now.size() != old.size() + (isEdited && member == nullptr ? 1 : 0)) {
        Fail("an edit added or removed values", text);
    }
    if (old.empty() && !isEdited && Printed(before) != Printed(after)) {
        Fail("an edit changed another value", text);
    }
    const bool isAdded = isEdited && member == nullptr; // where it stands, the others are one further
    std::size_t shift = 0;
    for (std::size_t i = 0; i < old.size(); ++i) {
        shift = isAdded && (shift != 0 || now[i].Key() == key) ? 1 : 0;
        if (old[i].Key() != now[i + shift].Key()) {
            Fail("an edit changed a key", text);
        }
        if (&old[i] != member) {
            CompareBut(old[i], now[i + shift], edited, key, text);
        }
    }
    bool value = false;
    if (isEdited && (after.Find(key) == nullptr || !after.Find(key)->Get(value) || !value)) {
        Fail("an edit is not there", text);
    }
}

struct Place {
    const JSONOutline* outline;
    const json::JSONNode* node;
};

// Goes down by the choice's bits as long as there are objects and arrays.
Place Choose(Place at, unsigned choice)
{
    for (; choice != 0; choice /= 4) {
        std::vector<Place> containers;
        for (std::size_t i = 0; i < at.outline->children.size(); ++i) {
            const json::JSONNode& child = at.node->Children()[i];
            if (child.IsObject() || child.IsArray()) {
                containers.push_back({&at.outline->children[i], &child});
            }
        }
        if (containers.empty()) {
            break;
        }
        at = containers[choice % containers.size()];
    }
    return at;
}

void Edit(const std::string& text, const json::JSONDocument& before, unsigned choice, unsigned key)
{
    JSONSplice splice(text);
    const Place place = Choose({&splice.Root(), &before.Root()}, choice);
    if (!place.node->IsObject()) {
        return;
    }
    const auto children = place.node->Children();
    const std::string name = key < children.size() ? std::string(children[key].Key()) : "\"new\n";
    splice.SetMember(*place.outline, name, "true");
    const auto after = Read(splice.Text());
    if (!after) {
        Fail("an edited text is no JSON", splice.Text());
    }
    CompareBut(before.Root(), after->Root(), place.node, name, splice.Text());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
    const auto document = Read(text);
    CompareInPlace(document, text);
    try {
        const JSONOutline outline = json::ReadOutline(text);
        if (document) {
            Compare(outline, document->Root(), text);
            Edit(text, *document, data[0], data[1]);
        }
    } catch (const json::json_outline_exception&) {
        if (document) {
            Fail("the scanner refuses what the reader takes", text);
        }
    }
    return 0;
}
