#include <tools/zelt/support/Definition.h>

#include <tools/zelt/editing/JSONOutline.h>
#include <tools/zelt/support/ControlChecks.h>

#include <capsule/DefinitionKeys.h>
#include <capsule/Serialization.h>

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
        ReadOutline(orvcore::AsNarrow(text));
        return reason;
    } catch (const OutlineError& error) {
        return error.what() + (" at " + PlaceInText(orvcore::AsNarrow(text), error.GetOffset()));
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
        problems.push_back({"MissingKey", LacksKey(where, error)});
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
        CollectMissingKey(problems, "composition for \"" + orvcore::ToNarrow(entry.first) + '"',
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
        control.label = "control " + std::to_string(controls.size() + 1) + " (\"" + control.id + "\")";
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

// A document that the version gate lets through, as a value tree.
struct ParsedDefinition {
    Definition definition;
    json::Variant tree;
};

ParsedDefinition Parse(const UTF8String& text)
{
    ParsedDefinition parsed;
    Problems& refusals = parsed.definition.refusals;
    try {
        parsed.tree = json::JSONParse(text);
        if (json::AsObject(parsed.tree) == nullptr) {
            refusals.push_back({"MalformedJSON", "definition.json is no JSON object"});
        }
    } catch (const json::json_parse_exception& error) {
        refusals.push_back({"MalformedJSON", "definition.json is malformed: " + MalformedText(text, error.what())});
    }
    parsed.definition.declaredVersion = TextMember(parsed.tree, orvcapsule::CAPSULE_API_VERSION_STR);
    try {
        parsed.definition.capsule = orvcapsule::serialization::CapsuleFromJson(text);
        if (parsed.definition.capsule == nullptr) {
            refusals.push_back(VersionRefusal(text, parsed.definition.declaredVersion));
        }
    } catch (const json::missing_key_exception& error) {
        CollectCompositionKeys(parsed.tree, refusals);
        ReadControls(parsed.tree, refusals);
        if (refusals.empty()) {
            refusals.push_back({"MissingKey", LacksKey("definition.json", error)});
        }
    }
    if (!refusals.empty()) {
        parsed.definition.capsule = nullptr;
    }
    return parsed;
}

} // namespace

Definition ReadDefinition(const UTF8String& text)
{
    return Parse(text).definition;
}

Problems CheckDefinition(const UTF8String& text)
{
    ParsedDefinition parsed = Parse(text);
    Problems problems = std::move(parsed.definition.refusals);
    // What a newer format means by its keys is not known.
    const bool understood = problems.empty() || problems.front().code == "MissingKey";
    if (understood) {
        Problems reported;
        CheckControls(ReadControls(parsed.tree, reported), problems);
    }
    return problems;
}

} // namespace zelt
