#include <tools/zelt/editing/DefinitionEditor.h>

#include <tools/zelt/editing/ControlInput.h>

#include <capsule/DefinitionKeys.h>
#include <capsule/Serialization.h>
#include <orvcore/host/Application.h>
#include <orvcore/text/Printable.h>

#include <algorithm>
#include <map>

namespace zelt {

namespace {

using namespace orvcapsule;
namespace json = orvcore::serialization;
using json::JSONOutline;
using json::JSONSplice;
using json::ToJSON;
using Kind = JSONOutline::Kind;

constexpr char kDefaultLocale[] = "en_US"; // of a text that names none, and the first to stand in for another's

std::string LocalizedEntry(const std::string& locale, std::string_view text)
{
    return "{\"localeString\":" + ToJSON(std::string_view(locale)) + ",\"str\":" + ToJSON(text) + '}';
}

// A list of localised texts that holds `text`, and for all other locales what they showed before.
std::string LocalizedList(const std::string& locale, std::string_view text, const std::string& older)
{
    std::map<std::string, std::string_view> texts{{locale, text}};
    if (!older.empty()) {
        texts.emplace(kDefaultLocale, older);
    }
    std::string list;
    for (const auto& [name, value] : texts) {
        list += (list.empty() ? "[" : ",") + LocalizedEntry(name, value);
    }
    return list + ']';
}

// An entry as readers take it: of one that is not, the whole list is of no use to them.
bool IsEntry(const JSONOutline& entry)
{
    const auto isText = [&](std::string_view key) {
        const JSONOutline* member = entry.Find(key);
        return member == nullptr || member->Is(Kind::kString);
    };
    return entry.Is(Kind::kObject) && isText(CAPSULE_STR_STR) && isText(CAPSULE_LOCALE_STR);
}

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

// An object with the members of another put over its own; both are JSON texts.
std::string Merged(std::string_view object, const std::string& over)
{
    JSONSplice splice{std::string(object)};
    for (const JSONOutline& member : json::ReadOutline(over).children) {
        splice.SetMember(splice.Root(), member.key, over.substr(member.begin, member.end - member.begin));
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
    if (edit.name) {
        SetName(*edit.name, locale);
    }
    if (edit.description) {
        SetText(CAPSULE_CAPDESC_STR, *edit.description);
    }
    if (!edit.tags.empty()) {
        SetList(CAPSULE_TAGS_STR, edit.tags);
    }
    bool all = true;
    for (const std::string& assignment : edit.controls) {
        try {
            SetControl(assignment, locale, edit.force);
        } catch (const UsageError& error) {
            ReportError(file, error.what());
            all = false;
        }
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
        list += (list.empty() ? "[" : ",") + ToJSON(std::string_view(text));
    }
    splice_.SetMember(splice_.Root(), key, list.empty() ? "[]" : list + ']');
}

void DefinitionEditor::SetName(std::string_view text, const std::string& locale)
{
    const std::string older = Decoded(splice_.Root().Find(CAPSULE_CAPNAME_STR));
    SetLocalized(splice_.Root(), CAPSULE_LOCCAPNAME_STR, text, locale, older);
}

void DefinitionEditor::SetControl(std::string_view assignment, const std::string& locale, bool force)
{
    std::size_t idLength = 0;
    const JSONOutline& control = FindControl(assignment, idLength);
    try {
        SetValue(control, assignment.substr(idLength + 1), locale, force);
    } catch (const UsageError& error) {
        throw UsageError("control \"" + std::string(assignment.substr(0, idLength)) + "\": " + error.what());
    }
}

std::string DefinitionEditor::Decoded(const JSONOutline* text) const
{
    if (text == nullptr || !text->Is(Kind::kString)) {
        return {};
    }
    return orvcore::ToNarrow(*json::AsString(json::JSONParse(orvcore::AsUTF8(splice_.TextOf(*text)))));
}

std::string DefinitionEditor::LocaleOf(const JSONOutline& entry) const
{
    const JSONOutline* locale = entry.Find(CAPSULE_LOCALE_STR);
    return locale != nullptr ? Decoded(locale) : kDefaultLocale;
}

void DefinitionEditor::SetLocalized(const JSONOutline& owner, std::string_view key, std::string_view text,
                                    const std::string& locale, const std::string& older)
{
    const JSONOutline* value = owner.Find(key);
    const JSONOutline* list = value != nullptr ? value->Find(CAPSULE_STRDB_STR) : nullptr;
    if (list == nullptr || !list->Is(Kind::kArray) ||
        !std::all_of(list->children.begin(), list->children.end(), IsEntry)) {
        splice_.SetMember(owner, key, "{\"strDB\":" + LocalizedList(locale, text, older) + '}');
        return;
    }
    if (list->children.empty()) {
        splice_.Replace(*list, LocalizedList(locale, text, older));
        return;
    }
    const auto& entries = list->children;
    for (std::size_t i = entries.size(); i-- > 0;) { // the last entry of a locale counts
        if (LocaleOf(entries[i]) == locale) {
            splice_.SetMember(entries[i], CAPSULE_STR_STR, ToJSON(text));
            return;
        }
    }
    std::size_t index = 0;
    while (index < entries.size() && LocaleOf(entries[index]) < locale) {
        ++index;
    }
    splice_.InsertElement(*list, index, LocalizedEntry(locale, text));
}

// An id may hold an equals sign: the shortest beginning that is an id counts.
const JSONOutline& DefinitionEditor::FindControl(std::string_view assignment, std::size_t& idLength) const
{
    const std::size_t first = assignment.find('=');
    if (first == assignment.npos) {
        throw UsageError('"' + std::string(assignment) + "\" is not ID=VALUE");
    }
    static const JSONOutline kNoControls;
    const JSONOutline* list = splice_.Root().Find(CAPSULE_CONTROLS_STR);
    std::vector<std::string> known;
    std::map<std::string, std::vector<const JSONOutline*>> byId;
    for (const JSONOutline& control : (list != nullptr ? *list : kNoControls).children) {
        known.push_back(Decoded(control.Find(CAPSULE_CONTROL_ID_STR)));
        byId[known.back()].push_back(&control);
    }
    for (idLength = first; idLength != assignment.npos; idLength = assignment.find('=', idLength + 1)) {
        const auto found = byId.find(std::string(assignment.substr(0, idLength)));
        if (found != byId.end() && found->second.size() > 1) {
            throw UsageError("control \"" + found->first + "\": several controls have this id");
        }
        if (found != byId.end()) {
            return *found->second.front();
        }
    }
    throw UsageError("there is no control \"" + std::string(assignment.substr(0, first)) +
                     (known.empty() ? "\"" : "\"; there are: " + Named(known)));
}

void DefinitionEditor::SetValue(const JSONOutline& control, std::string_view input, const std::string& locale,
                                bool force)
{
    const auto record = serialization::ClientControlFromJson(json::JSONParse(orvcore::AsUTF8(splice_.TextOf(control))));
    if (record == nullptr) {
        throw UsageError("a control of this kind has no value to set");
    }
    const ClientControlType type = record->GetType();
    if (type == ClientControlType::kText || type == ClientControlType::kComment) {
        SetLocalized(control, CAPSULE_CONTROL_VALUE_STR, input, locale, {});
        return;
    }
    const bool isMedia = type == ClientControlType::kMedia;
    const std::string_view key = isMedia ? CAPSULE_MEDIA_CACHE_VALUE_STR : CAPSULE_CONTROL_VALUE_STR;
    const std::string value = ValueAsJSON(*record, input, force);
    const JSONOutline* old = control.Find(key);
    splice_.SetMember(control, key, type == ClientControlType::kPoint2D ? Merged(splice_.TextOf(*old), value) : value);
}

} // namespace zelt
