#include <tools/zelt/editing/LocalizedTexts.h>

#include <capsule/ClientControl.h>
#include <capsule/DefinitionKeys.h>
#include <orvcore/json/JSON.h>

#include <algorithm>

namespace zelt {

namespace {

using namespace orvcapsule;
namespace json = orvcore::serialization;
using json::JSONOutline;
using json::JSONSplice;
using Kind = JSONOutline::Kind;
using Visit = std::function<void(const std::string&, const TextPlace&)>;

constexpr char kTip[] = "uiToolTip";
constexpr char kColumns[] = "columnInfo";
constexpr char kColumnName[] = "columnName";

// An entry as readers take it: of one that is not, the whole list is of no use to them.
bool IsEntry(const JSONOutline& entry)
{
    const auto isText = [&](std::string_view key) {
        const JSONOutline* member = entry.Find(key);
        return member == nullptr || member->Is(Kind::kString);
    };
    return entry.Is(Kind::kObject) && isText(CAPSULE_STR_STR) && isText(CAPSULE_LOCALE_STR);
}

bool HasType(const JSONSplice& document, const JSONOutline& control, ClientControlType type)
{
    const JSONOutline* stored = control.Find(CAPSULE_CONTROL_TYPE_STR);
    return stored != nullptr && document.TextOf(*stored) == std::to_string(static_cast<int>(type));
}

const std::vector<JSONOutline>& Elements(const JSONOutline& object, std::string_view key)
{
    static const std::vector<JSONOutline> kNone;
    const JSONOutline* list = object.Find(key);
    return list != nullptr && list->Is(Kind::kArray) ? list->children : kNone;
}

void VisitControl(const JSONSplice& document, const JSONOutline& control, const Visit& visit)
{
    const std::string id = DecodedText(document, control.Find(CAPSULE_CONTROL_ID_STR)) + '/';
    const auto member = [&](const JSONOutline& owner, const char* key, const std::string& name) {
        visit(id + name, {&owner, key, owner.Find(key)});
    };
    member(control, CAPSULE_CONTROL_UINAME_STR, "label");
    const auto tips = TextsAt(document, {&control, kTip, control.Find(kTip)});
    if (std::any_of(tips.begin(), tips.end(), [](const auto& tip) { return !tip.second.empty(); })) {
        member(control, kTip, "tip"); // writers put an empty one into every control
    }
    if (HasType(document, control, ClientControlType::kText) ||
        HasType(document, control, ClientControlType::kComment)) {
        member(control, CAPSULE_CONTROL_VALUE_STR, "value");
    }
    // Entries and columns have no ids, so their number in the list names them; a translator's table is good as long as
    // the list keeps its order.
    std::size_t number = 0;
    for (const JSONOutline& entry : Elements(control, CAPSULE_MENU_CONTENT_STR)) {
        visit(id + "entry/" + std::to_string(number++), {nullptr, {}, &entry});
    }
    number = 0;
    for (const JSONOutline& column : Elements(control, kColumns)) {
        member(column, kColumnName, "heading/" + std::to_string(number++));
    }
}

} // namespace

void VisitTexts(const JSONSplice& document, const Visit& visit)
{
    const JSONOutline& root = document.Root();
    visit("name", {&root, CAPSULE_LOCCAPNAME_STR, root.Find(CAPSULE_LOCCAPNAME_STR)});
    for (const JSONOutline& control : Elements(root, CAPSULE_CONTROLS_STR)) {
        if (control.Is(Kind::kObject)) {
            VisitControl(document, control, visit);
        }
    }
}

std::map<std::string, std::string> TextsAt(const JSONSplice& document, const TextPlace& place)
{
    std::map<std::string, std::string> texts;
    if (const JSONOutline* entries = TextEntries(place.value)) {
        for (const JSONOutline& entry : entries->children) {
            texts[LocaleOfEntry(document, entry)] = DecodedText(document, entry.Find(CAPSULE_STR_STR));
        }
    }
    return texts;
}

std::string DecodedText(const JSONSplice& document, const JSONOutline* text)
{
    if (text == nullptr || !text->Is(Kind::kString)) {
        return {};
    }
    const std::string_view quoted = document.TextOf(*text);
    return quoted.find('\\') == quoted.npos
               ? std::string(quoted.substr(1, quoted.size() - 2)) // most have no escapes, and there may be thousands
               : orvcore::ToNarrow(*json::AsString(json::JSONParse(orvcore::AsUTF8(quoted))));
}

const JSONOutline* TextEntries(const JSONOutline* value)
{
    const JSONOutline* list = value != nullptr ? value->Find(CAPSULE_STRDB_STR) : nullptr;
    const bool isTaken = list != nullptr && list->Is(Kind::kArray) &&
                         std::all_of(list->children.begin(), list->children.end(), &IsEntry);
    return isTaken ? list : nullptr;
}

std::string LocaleOfEntry(const JSONSplice& document, const JSONOutline& entry)
{
    const JSONOutline* locale = entry.Find(CAPSULE_LOCALE_STR);
    return locale != nullptr ? DecodedText(document, locale) : "en_US";
}

} // namespace zelt
