#include <tools/zelt/editing/DefinitionEditor.h>

#include <tools/zelt/editing/ControlInput.h>
#include <tools/zelt/output/Errors.h>

#include <capsule/DefinitionKeys.h>
#include <capsule/Guid.h>
#include <capsule/Serialization.h>
#include <orvcore/host/Application.h>
#include <orvcore/text/NearestName.h>
#include <orvcore/text/Printable.h>

#include <algorithm>
#include <map>

namespace zelt {

// All edits go through one JSONSplice, which takes places of the text as it was read and makes the collected edits in
// one pass when the text is next asked for. So an outline pointer is good until then, and each edit must be for a place
// of its own: several rows for one text are put together before they become an edit.

namespace {

using namespace orvcapsule;
namespace json = orvcore::serialization;
using json::JSONOutline;
using json::JSONSplice;
using json::ToJSON;
using Kind = JSONOutline::Kind;

constexpr char kNameKey[] = "name";        // of the template's own text
constexpr char kDefaultLocale[] = "en_US"; // of a text that names none, and the first to stand in for another's

std::string LocalizedEntry(const std::string& locale, std::string_view text)
{
    return "{\"localeString\":" + ToJSON(std::string_view(locale)) + ",\"str\":" + ToJSON(text) + '}';
}

// A list of localised texts, and for all other locales what they showed before.
std::string LocalizedList(std::map<std::string, std::string> texts, const std::string& older)
{
    if (!older.empty()) {
        texts.emplace(kDefaultLocale, older);
    }
    std::string list;
    for (const auto& [locale, text] : texts) {
        list.append(list.empty() ? "[" : ",").append(LocalizedEntry(locale, text));
    }
    return list + ']';
}

// The places of a document's texts by their names.
struct NamedPlaces {
    explicit NamedPlaces(const JSONSplice& document)
    {
        VisitTexts(document, [&](const std::string& name, const TextPlace& place) {
            names.push_back(name);
            byName.emplace(name, place);
        });
    }

    // The place that a key is for. @throws UsageError
    const std::pair<const std::string, TextPlace>& Need(const std::string& key) const
    {
        const std::string value = key + "/value";
        const bool mayBeValue = key != kNameKey;
        const std::size_t count = byName.count(key) + (mayBeValue ? byName.count(value) : 0);
        if (count == 0) {
            const std::string nearest = orvcore::NearestName(key, names);
            throw UsageError("there is no text \"" + key + '"' +
                             (nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?"));
        }
        // Two controls may have one id; to change the first of them could be the wrong one.
        if (count > 1) {
            throw UsageError("several texts are called \"" + key + '"');
        }
        const auto found = byName.find(key);
        return found != byName.end() ? *found : *byName.find(value);
    }

    std::vector<std::string> names; // in the document's order
    std::multimap<std::string, TextPlace> byName;
};

// The first ids of a list, for a message.
std::string Named(const std::vector<std::string>& ids)
{
    constexpr std::size_t kMost = 30;
    std::string named;
    for (std::size_t i = 0; i < std::min(ids.size(), kMost); ++i) {
        named += (i == 0 ? "" : ", ") + orvcore::Shortened(ids[i]);
    }
    return ids.size() <= kMost ? named : named + " and " + std::to_string(ids.size() - kMost) + " more";
}

// The controls of a document by their ids.
struct NamedControls {
    explicit NamedControls(const JSONSplice& document)
    {
        static const JSONOutline kNoControls;
        const JSONOutline* list = document.Root().Find(CAPSULE_CONTROLS_STR);
        for (const JSONOutline& control : (list != nullptr ? *list : kNoControls).children) {
            ids.push_back(DecodedText(document, control.Find(CAPSULE_CONTROL_ID_STR)));
            byId[ids.back()].push_back(&control);
        }
    }

    // @throws UsageError
    const JSONOutline& Need(const std::string& id) const
    {
        const auto found = byId.find(id);
        if (found == byId.end()) {
            throw UsageError("there is no control \"" + id + (ids.empty() ? "\"" : "\"; there are: " + Named(ids)));
        }
        if (found->second.size() > 1) {
            throw UsageError("control \"" + id + "\": several controls have this id");
        }
        return *found->second.front();
    }

    std::vector<std::string> ids; // in the document's order
    std::map<std::string, std::vector<const JSONOutline*>> byId;
};

// An object with the members of another put over its own; both are JSON texts.
std::string Merged(std::string_view object, const std::string& over)
{
    JSONSplice splice{std::string(object)};
    const JSONOutline& root = splice.Root();
    for (const JSONOutline& member : json::ReadOutline(over).children) {
        splice.SetMember(root, member.key, over.substr(member.begin, member.end - member.begin));
    }
    return splice.Text();
}

} // namespace

DefinitionEditor::DefinitionEditor(std::string_view text)
    : splice_(std::string(text))
{
}

bool DefinitionEditor::Apply(const EditOptions& edit, const std::string& file)
{
    const std::string locale = edit.locale.empty() ? orvcore::Application::GetLanguage() : edit.locale;
    if (edit.newID) {
        SetText(CAPSULE_CAPID_STR, orvcore::ToNarrow(utils::GenerateStringGuid()));
    }
    if (edit.name) {
        SetName(*edit.name, locale);
    }
    if (edit.description) {
        SetText(CAPSULE_CAPDESC_STR, *edit.description);
    }
    if (!edit.tags.empty() || edit.clearTags) {
        SetList(CAPSULE_TAGS_STR, edit.tags);
    }
    bool all = true;
    // All mistakes of a command line are reported at once, and nothing is stored then.
    const auto attempt = [&](const auto& change) {
        try {
            change();
        } catch (const UsageError& error) {
            ReportError(file, error.what());
            all = false;
        }
    };
    for (const std::string& assignment : edit.texts) {
        attempt([&] { SetTextFrom(assignment); });
    }
    for (const std::string& assignment : edit.controls) {
        attempt([&] { SetControl(assignment, locale, edit.force); });
    }
    return all;
}

void DefinitionEditor::SetText(std::string_view key, std::string_view text)
{
    splice_.SetMember(splice_.Root(), key, ToJSON(text));
}

void DefinitionEditor::SetList(std::string_view key, const std::vector<std::string>& texts)
{
    std::string list;
    for (const std::string& text : texts) {
        list.append(list.empty() ? "[" : ",").append(ToJSON(std::string_view(text)));
    }
    splice_.SetMember(splice_.Root(), key, list.empty() ? "[]" : list + ']');
}

void DefinitionEditor::SetName(std::string_view text, const std::string& locale)
{
    SetLocalizedText(kNameKey, locale, text);
}

// An id may hold an equals sign: the shortest beginning that is an id counts.
void DefinitionEditor::SetControl(std::string_view assignment, const std::string& locale, bool force)
{
    const std::size_t first = assignment.find('=');
    if (first == assignment.npos) {
        throw UsageError('"' + std::string(assignment) + "\" is not ID=VALUE");
    }
    const NamedControls controls(splice_);
    std::size_t end = first;
    while (end != assignment.npos && !controls.byId.contains(std::string(assignment.substr(0, end)))) {
        end = assignment.find('=', end + 1);
    }
    end = end == assignment.npos ? first : end;
    SetControl(std::string(assignment.substr(0, end)), assignment.substr(end + 1), locale, force);
}

void DefinitionEditor::SetControl(const std::string& id, std::string_view value, const std::string& locale, bool force)
{
    const NamedControls controls(splice_);
    const JSONOutline& control = controls.Need(id);
    try {
        SetValue(control, value, locale, force);
    } catch (const UsageError& error) {
        throw UsageError("control \"" + id + "\": " + error.what());
    }
}

// All edits use one outline, so there is one for each place: rows for the same place are put together first.
std::vector<std::string> DefinitionEditor::SetTexts(const std::vector<TextTable::Row>& rows)
{
    const NamedPlaces places(splice_);
    const std::string olderName = OlderName();
    std::map<const std::pair<const std::string, TextPlace>*, Texts> wanted;
    std::vector<std::string> errors;
    for (const TextTable::Row& row : rows) {
        try {
            Texts& texts = wanted[&places.Need(row.key)];
            for (const auto& [locale, text] : row.texts) {
                texts[locale] = text;
            }
        } catch (const UsageError& error) {
            errors.emplace_back(error.what());
        }
    }
    for (const auto& [named, texts] : wanted) {
        SetLocalized(named->second, texts, named->first == kNameKey ? olderName : "");
    }
    return errors;
}

void DefinitionEditor::SetLocalized(const TextPlace& place, const Texts& texts, const std::string& older)
{
    const JSONOutline* list = TextEntries(place.value);
    if (texts.empty()) {
        return;
    }
    if (list == nullptr) {
        const std::string whole = "{\"strDB\":" + LocalizedList(texts, older) + '}';
        place.owner != nullptr ? splice_.SetMember(*place.owner, place.key, whole)
                               : splice_.Replace(*place.value, whole);
    } else if (list->children.empty()) {
        splice_.Replace(*list, LocalizedList(texts, older));
    } else {
        for (const auto& [locale, text] : texts) {
            SetEntry(*list, locale, text);
        }
    }
}

void DefinitionEditor::SetEntry(const JSONOutline& list, const std::string& locale, const std::string& text)
{
    const auto& entries = list.children;
    for (std::size_t i = entries.size(); i-- > 0;) { // the last entry of a locale counts
        if (LocaleOfEntry(splice_, entries[i]) == locale) {
            splice_.SetMember(entries[i], CAPSULE_STR_STR, ToJSON(text));
            return;
        }
    }
    std::size_t index = 0;
    // Where the library's writer would put it: locales ascend.
    while (index < entries.size() && LocaleOfEntry(splice_, entries[index]) < locale) {
        ++index;
    }
    splice_.InsertElement(list, index, LocalizedEntry(locale, text));
}

void DefinitionEditor::SetLocalizedText(const std::string& key, const std::string& locale, std::string_view text)
{
    const auto errors = SetTexts({{key, {{locale, std::string(text)}}}});
    if (!errors.empty()) {
        throw UsageError(errors.front());
    }
}

void DefinitionEditor::SetTextFrom(std::string_view assignment)
{
    const std::size_t colon = assignment.find(':');
    const std::size_t equals = assignment.find('=', colon == assignment.npos ? 0 : colon);
    if (colon == assignment.npos || equals == assignment.npos || colon == 0) {
        throw UsageError('"' + std::string(assignment) + "\" is not LOCALE:ID=TEXT");
    }
    SetLocalizedText(std::string(assignment.substr(colon + 1, equals - colon - 1)),
                     std::string(assignment.substr(0, colon)), assignment.substr(equals + 1));
}

std::string DefinitionEditor::OlderName() const
{
    return DecodedText(splice_, splice_.Root().Find(CAPSULE_CAPNAME_STR));
}

void DefinitionEditor::SetValue(const JSONOutline& control, std::string_view input, const std::string& locale,
                                bool force)
{
    // The control as it is now, with the edits made before in this run.
    const auto record = serialization::ClientControlFromJson(json::JSONParse(orvcore::AsUTF8(splice_.TextOf(control))));
    if (record == nullptr) {
        throw UsageError("a control of this kind has no value to set");
    }
    const ClientControlType type = record->GetType();
    if (type == ClientControlType::kText || type == ClientControlType::kComment) {
        SetLocalized({&control, CAPSULE_CONTROL_VALUE_STR, control.Find(CAPSULE_CONTROL_VALUE_STR)},
                     {{locale, std::string(input)}}, {});
        return;
    }
    const bool isMedia = type == ClientControlType::kMedia;
    const std::string_view key = isMedia ? CAPSULE_MEDIA_CACHE_VALUE_STR : CAPSULE_CONTROL_VALUE_STR;
    const std::string value = ValueAsJSON(*record, input, force);
    // A point may have members that this library does not know, beside x and y.
    const JSONOutline* old = control.Find(key);
    splice_.SetMember(control, key, type == ClientControlType::kPoint2D ? Merged(splice_.TextOf(*old), value) : value);
}

} // namespace zelt
