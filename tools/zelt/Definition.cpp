#include "Definition.h"

#include "ControlChecks.h"
#include "JSONOutline.h"

#include <capsule/DefinitionKeys.h>
#include <capsule/Serialization.h>
#include <orvcore/JSONDocument.h>

#include <optional>

namespace zelt {

namespace {

namespace json = orvcore::serialization;
using orvcapsule::UTF8String;

std::string TextMember(const json::JSONNode& object, std::string_view key)
{
    const json::JSONNode* value = object.Find(key);
    std::string_view text;
    return value != nullptr && value->Get(text) ? std::string(text) : std::string();
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
        problems.Add({"MissingKey", LacksKey(where, error)});
    }
}

void CollectCompositionKeys(const json::JSONNode& root, Problems& problems)
{
    const auto collect = [&](const std::string& where, const json::JSONNode& composition) {
        CollectMissingKey(problems, where,
                          [&] { orvcapsule::serialization::SourceInfoFromJson(composition.ToTree()); });
    };
    const json::JSONNode* older = root.Find(orvcapsule::CAPSULE_SOURCE_INFO_STR);
    if (older != nullptr && older->IsObject()) {
        collect("composition", *older);
    }
    const json::JSONNode* localized = root.Find(orvcapsule::CAPSULE_SOURCE_INFO_LOC_STR);
    if (localized != nullptr && localized->IsObject()) {
        for (const json::JSONNode& entry : localized->Children()) {
            collect("composition for \"" + Shortened(entry.Key()) + '"', entry);
        }
    }
}

// Every control of the document. Kinds without a record of their own have an id all the same.
std::vector<DocumentControl> ReadControls(const json::JSONNode& root, Problems& problems)
{
    std::vector<DocumentControl> controls;
    const json::JSONNode* list = root.Find(orvcapsule::CAPSULE_CONTROLS_STR);
    if (list == nullptr || !list->IsArray()) {
        return controls;
    }
    for (const json::JSONNode& value : list->Children()) {
        DocumentControl control;
        control.id = TextMember(value, orvcapsule::CAPSULE_CONTROL_ID_STR);
        control.label = "control " + std::to_string(controls.size() + 1) + " (\"" + Shortened(control.id) + "\")";
        CollectMissingKey(problems, control.label,
                          [&] { control.record = orvcapsule::serialization::ClientControlFromJson(value.ToTree()); });
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

// A definition as it was read and, where it is JSON, the document.
struct ParsedDefinition {
    Definition definition;
    std::optional<json::JSONDocument> document;
};

void ReadCapsule(const UTF8String& text, ParsedDefinition& parsed)
{
    Definition& definition = parsed.definition;
    try {
        definition.capsule = orvcapsule::serialization::CapsuleFromJson(text);
        if (definition.capsule == nullptr) {
            definition.refusals.Add(VersionRefusal(text, definition.declaredVersion));
        } else if (parsed.document && definition.capsule->GetAPIVersion().empty()) {
            definition.refusals.Add({"NoVersion", "definition.json's \"apiVersion\" is no text or an empty one"});
        }
    } catch (const json::missing_key_exception& error) {
        CollectCompositionKeys(parsed.document->Root(), definition.refusals);
        ReadControls(parsed.document->Root(), definition.refusals);
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
        auto document = json::JSONDocument::Parse(text);
        if (document.Root().IsObject()) {
            definition.declaredVersion = TextMember(document.Root(), orvcapsule::CAPSULE_API_VERSION_STR);
            parsed.document = std::move(document);
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
        CheckControls(ReadControls(parsed.document->Root(), problems), problems);
    }
}

} // namespace zelt
