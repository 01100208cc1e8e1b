#include <validation/detail/DefinitionJudging.h>

#include <validation/detail/DefinitionChecks.h>

#include <capsule/Capsule.h>
#include <capsule/DefinitionKeys.h>
#include <capsule/Serialization.h>
#include <orvcore/text/Printable.h>
#include <package/PackageNames.h>

#include <optional>

// One text, three views. CapsuleFromJson says whether hosts take the definition; it is the judge, and what follows only
// says why. DefinitionText has the values with their places. The schema's shapes say what may stand at each place.
//
// The first two agree because they use the same parser. The schema is a description beside them, so a test
// compares it with the readers, and where it still finds no reason for a refusal, TellRefusals asks the readers of
// single records. A finding whose code is in IsRefusal is therefore one for which readers refuse, and no other may have
// such a code: ReadDefinition picks the reasons by it.

namespace orvcapsule::detail {

namespace {

namespace json = orvcore::serialization;

Finding OfText(std::string_view code, std::string text)
{
    return {Severity::Error, std::string(code), std::move(text), kJSONFileName};
}

Finding Malformed(std::string_view text, const json::json_parse_exception& error)
{
    Finding finding = OfText("MalformedJSON", std::string("definition.json is malformed: ") + error.what());
    finding.expected = "a JSON object in UTF-8";
    // The two byte-order marks, or the second byte of a Latin character: editors write UTF-16, and the parser's own
    // complaint about a byte would not help.
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") || (text.size() > 1 && text[1] == '\0')) {
        finding.text = "definition.json is malformed: it is UTF-16, not UTF-8";
    } else if (const auto* placed = dynamic_cast<const json::json_outline_exception*>(&error)) {
        json::TextPlace place;
        place.Pass(text.substr(0, placed->GetOffset()));
        finding.line = place.line;
        finding.column = place.column;
        finding.text += " at line " + std::to_string(place.line) + ", column " + std::to_string(place.column);
    }
    return finding;
}

// The text, unless it is not a JSON object, which is told.
std::optional<DefinitionText> Parse(std::string_view text, FindingList& findings)
{
    try {
        DefinitionText parsed(text);
        if (parsed.Root()->IsObject()) {
            return parsed;
        }
        findings.Add(OfText("MalformedJSON", "definition.json is no JSON object"));
    } catch (const json::json_parse_exception& error) {
        findings.Add(Malformed(text, error));
    }
    return std::nullopt;
}

enum class Reading { Good, LacksKey, Refused };

Finding OfVersion(std::string_view text)
{
    if (text.find(CAPSULE_API_VERSION_STR) == text.npos) {
        return OfText("NoVersion", "definition.json names no \"apiVersion\"");
    }
    const std::string declared = DeclaredVersion(text);
    return OfText("NewerVersion",
                  "made for version " + (declared.empty() ? "(not readable)" : orvcore::Shortened(declared)) +
                      " of the definition format; this library reads up to " + Capsule::GetCurrentAPIVersion());
}

// What readers say of a text. `refusal` receives what they say of its version.
Reading Read(std::string_view text, Finding& refusal)
{
    try {
        const auto capsule = serialization::CapsuleFromJson(orvcore::ToUTF8(text));
        if (capsule != nullptr && !capsule->GetAPIVersion().empty()) {
            return Reading::Good;
        }
        refusal = capsule == nullptr
                      ? OfVersion(text)
                      : OfText("NoVersion", "definition.json's \"apiVersion\" is no text or an empty one");
        refusal.expected = '"' + Capsule::GetCurrentAPIVersion() + '"';
        return Reading::Refused;
    } catch (const json::missing_key_exception&) {
        return Reading::LacksKey;
    }
}

// The first value under `key` in a record.
// Readers name the key alone. Where a record has it in several places this may be another than the one refused; the
// finding names the key all the same.
PlacedValue FindBelow(const PlacedValue& record, std::string_view key)
{
    PlacedValue found = record.Find(key);
    for (std::size_t i = 0; !found && i < record.size(); ++i) {
        found = FindBelow(record[i], key);
    }
    return found;
}

template <class ReadRecord>
void TellRefusal(const PlacedValue& record, DefinitionReport& report, const ReadRecord& read)
{
    try {
        // A tree of one record at a time: the tree of a whole definition takes several times the memory of the compact
        // document.
        read(record->ToTree());
    } catch (const json::missing_key_exception& error) {
        const PlacedValue value = FindBelow(record, error.GetKey());
        report.At(value ? value : record, {Severity::Error, "MissingKey",
                                           "the value of \"" + error.GetKey() + "\" cannot be used", "a usable value"});
    }
}

// What the schema cannot say, such as a day that no calendar has: each record's reader is asked by itself.
void TellRefusals(const PlacedValue& root, DefinitionReport& report)
{
    const auto compositions = root.Find(CAPSULE_SOURCE_INFO_LOC_STR);
    for (std::size_t i = 0; compositions && compositions->IsObject() && i < compositions.size(); ++i) {
        TellRefusal(compositions[i], report, serialization::SourceInfoFromJson);
    }
    if (const auto composition = root.Find(CAPSULE_SOURCE_INFO_STR)) {
        TellRefusal(composition, report, serialization::SourceInfoFromJson);
    }
    const auto controls = root.Find(CAPSULE_CONTROLS_STR);
    for (std::size_t i = 0; controls && controls->IsArray() && i < controls.size(); ++i) {
        TellRefusal(controls[i], report, serialization::ClientControlFromJson);
    }
}

} // namespace

bool IsRefusal(std::string_view code) noexcept
{
    return code == "MissingKey" || code == "NoVersion" || code == "NewerVersion" || code == "MalformedJSON";
}

std::string DeclaredVersion(std::string_view text)
{
    try {
        const auto document = json::JSONDocument::Parse(orvcore::AsUTF8(text));
        const json::JSONNode* version = document.Root().Find(CAPSULE_API_VERSION_STR);
        std::string_view declared;
        return version != nullptr && version->Get(declared) ? std::string(declared) : std::string();
    } catch (const json::json_parse_exception&) {
        return {};
    }
}

void JudgeDefinition(std::string_view text, FindingList& findings)
{
    Finding refusal;
    const Reading reading = Read(text, refusal); // first: its record is gone before more memory is taken
    const std::optional<DefinitionText> parsed = Parse(text, findings);
    if (!parsed) {
        return;
    }
    if (reading == Reading::Refused) { // a newer version's keys may mean anything
        return findings.Add(std::move(refusal));
    }
    const PlacedValue root = parsed->Root();
    DefinitionReport report(text, root);
    const std::vector<MetText> texts = CheckShape(root, report);
    if (reading == Reading::LacksKey && report.Refusals() == 0) {
        TellRefusals(root, report);
    }
    CheckTopLevel(text, root, report);
    CheckCompositions(root, report);
    CheckControls(root, report);
    CheckTexts(texts, report);
    report.Finish(findings);
}

} // namespace orvcapsule::detail
