#include <tools/zelt/support/Definition.h>

#include <tools/zelt/support/ControlChecks.h>

#include <capsule/DefinitionKeys.h>
#include <capsule/Serialization.h>
#include <orvcore/json/JSONOutline.h>

namespace zelt {

namespace {

namespace json = orvcore::serialization;
using orvcapsule::UTF8String;

const json::Variant* Member(const json::Variant& object, std::string_view key)
{
    const auto name = orvcore::AsUTF8(key);
    return json::ObjectHasProperty(object, name) ? &json::GetVariantInObject(object, name) : nullptr;
}

std::string TextMember(const json::Variant& object, std::string_view key)
{
    const json::Variant* value = Member(object, key);
    const UTF8String* text = value != nullptr ? json::AsString(*value) : nullptr;
    return text != nullptr ? orvcore::ToNarrow(*text) : std::string();
}

// The parser's reason, and the place when the text is malformed in a way that has one.
std::string MalformedText(const UTF8String& text, const std::string& reason)
{
    try {
        json::ReadOutline(orvcore::AsNarrow(text));
        return reason;
    } catch (const json::json_outline_exception& error) {
        return error.what() + (" at " + json::PlaceInText(orvcore::AsNarrow(text), error.GetOffset()));
    }
}

std::string LacksKey(const std::string& where, const json::missing_key_exception& error)
{
    return where + ": the required key \"" + error.GetKey() + "\" is missing or holds no usable value";
}

// Reads one record for its missing keys.
template <class Read>
void CollectMissingKey(Problems& problems, const std::string& where, Read&& read)
{
    try {
        read();
    } catch (const json::missing_key_exception& error) {
        problems.Add({"MissingKey", LacksKey(where, error)});
    }
}

void CollectCompositionKeys(const json::Variant& root, Problems& problems)
{
    if (const auto* older = Member(root, orvcapsule::CAPSULE_SOURCE_INFO_STR); older && json::AsObject(*older)) {
        CollectMissingKey(problems, "composition", [&] { orvcapsule::serialization::SourceInfoFromJson(*older); });
    }
    const auto* localized = Member(root, orvcapsule::CAPSULE_SOURCE_INFO_LOC_STR);
    if (localized == nullptr || json::AsObject(*localized) == nullptr) {
        return;
    }
    for (const auto& entry : *json::AsObject(*localized)) {
        CollectMissingKey(problems, "composition for \"" + Shortened(orvcore::AsNarrow(entry.first)) + '"',
                          [&] { orvcapsule::serialization::SourceInfoFromJson(*entry.second); });
    }
}

// Every control of the document. Kinds without a record of their own have an id all the same.
std::vector<DocumentControl> ReadControls(const json::Variant& root, Problems& problems)
{
    std::vector<DocumentControl> controls;
    const auto* list = Member(root, orvcapsule::CAPSULE_CONTROLS_STR);
    if (list == nullptr || json::AsArray(*list) == nullptr) {
        return controls;
    }
    for (const auto& value : *json::AsArray(*list)) {
        DocumentControl control;
        control.id = TextMember(*value, orvcapsule::CAPSULE_CONTROL_ID_STR);
        control.label = "control " + std::to_string(controls.size() + 1) + " (\"" + Shortened(control.id) + "\")";
        CollectMissingKey(problems, control.label,
                          [&] { control.record = orvcapsule::serialization::ClientControlFromJson(*value); });
        controls.push_back(std::move(control));
    }
    return controls;
}

Problem VersionRefusal(const UTF8String& text, const std::string& declared)
{
    if (text.find(orvcore::AsUTF8(orvcapsule::CAPSULE_API_VERSION_STR)) == UTF8String::npos) {
        return {"NoVersion", "definition.json names no \"apiVersion\""};
    }
    return {"NewerVersion", "made for version " + (declared.empty() ? "(not readable)" : declared) +
                                " of the definition format; this library reads up to " +
                                orvcapsule::Capsule::GetCurrentAPIVersion()};
}

// A definition and the value tree of its text; nothing in the tree where that is no JSON object.
struct ParsedDefinition {
    Definition definition;
    json::Variant tree;
};

void ReadCapsule(const UTF8String& text, ParsedDefinition& parsed)
{
    Definition& definition = parsed.definition;
    try {
        definition.capsule = orvcapsule::serialization::CapsuleFromJson(text);
        if (definition.capsule == nullptr) {
            definition.refusals.Add(VersionRefusal(text, definition.declaredVersion));
        } else if (parsed.tree.has_value() && definition.capsule->GetAPIVersion().empty()) {
            definition.refusals.Add({"NoVersion", "definition.json's \"apiVersion\" is no text or an empty one"});
        }
    } catch (const json::missing_key_exception& error) {
        CollectCompositionKeys(parsed.tree, definition.refusals);
        ReadControls(parsed.tree, definition.refusals);
        if (definition.refusals.empty()) {
            definition.refusals.Add({"MissingKey", LacksKey("definition.json", error)});
        }
    }
}

ParsedDefinition Parse(const UTF8String& text)
{
    ParsedDefinition parsed;
    Definition& definition = parsed.definition;
    try {
        json::Variant tree = json::JSONParse(text);
        if (json::AsObject(tree) != nullptr) {
            definition.declaredVersion = TextMember(tree, orvcapsule::CAPSULE_API_VERSION_STR);
            parsed.tree = std::move(tree);
        } else {
            definition.refusals.Add({"MalformedJSON", "definition.json is no JSON object"});
        }
    } catch (const json::json_parse_exception& error) {
        definition.refusals.Add(
            {"MalformedJSON", "definition.json is malformed: " + MalformedText(text, error.what())});
    }
    ReadCapsule(text, parsed);
    if (!definition.refusals.empty()) {
        definition.capsule = nullptr;
    }
    return parsed;
}

} // namespace

Definition ReadDefinition(const UTF8String& text)
{
    return Parse(text).definition;
}

void CheckDefinition(const UTF8String& text, Problems& problems)
{
    ParsedDefinition parsed = Parse(text);
    const bool isRead = parsed.definition.capsule != nullptr;
    parsed.definition.capsule = nullptr; // its controls are read again, one by one
    const std::vector<Problem> refusals = parsed.definition.refusals.Told();
    for (const Problem& refusal : refusals) {
        problems.Add(refusal);
    }
    // What a newer format means by its keys is not known.
    if (isRead || refusals.front().code == "MissingKey") {
        CheckControls(ReadControls(parsed.tree, problems), problems);
    }
}

} // namespace zelt
