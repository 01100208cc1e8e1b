#include <capsule/detail/UIStringJSON.h>

#include <capsule/DefinitionKeys.h>
#include <capsule/detail/Locale.h>

#include <algorithm>

namespace orvcapsule::serialization::detail {

struct UIStringTable {
    static constexpr auto kStrings = &UIString::strings_;
};

} // namespace orvcapsule::serialization::detail

namespace orvcore::serialization::detail {

namespace {

using orvcapsule::LocStrPair;
using Entry = std::map<UTF16String, UTF16String>::value_type;

// One entry as it is read. An unusable part makes the whole text unusable, which is for the text's own key to judge.
struct ReadEntry {
    LocStrPair pair;
    bool isUsable = true;
};

template <UTF16String LocStrPair::*Part>
bool ReadPart(const JSONNode& node, ReadEntry& entry)
{
    entry.isUsable = Codec<UTF16String>::Read(node, entry.pair.*Part) && entry.isUsable;
    return true;
}

// Entries are read as pairs, in list order, and written straight from the map.
constexpr auto kEntryFields =
    Fields(CustomField(orvcapsule::CAPSULE_STR_STR, Presence::kLenient, ReadPart<&LocStrPair::text>,
                       [](JSONSink& sink, const Entry& entry) { Codec<UTF16String>::Write(sink, entry.second); }),
           CustomField(orvcapsule::CAPSULE_LOCALE_STR, Presence::kLenient, ReadPart<&LocStrPair::locale>,
                       [](JSONSink& sink, const Entry& entry) { Codec<UTF16String>::Write(sink, entry.first); }));

} // namespace

bool Codec<orvcapsule::UIString>::Read(const JSONNode& node, orvcapsule::UIString& out)
{
    const JSONNode* list = node.Find(orvcapsule::CAPSULE_STRDB_STR);
    if (list == nullptr || !list->IsArray()) {
        return false;
    }
    std::map<UTF16String, UTF16String> strings;
    for (const JSONNode& element : list->Children()) {
        if (!element.IsObject()) {
            return false;
        }
        // An entry without a locale is from the time when every text was American English.
        ReadEntry entry{{UTF16String(orvcapsule::detail::kFallbackLocale), {}}};
        TableWalker<ReadEntry, kEntryFields>::Read(element, entry, nullptr);
        // One broken part spoils the whole text. Check below and validation (IsUsable in TextChecks.cpp) judge by the
        // same rule.
        if (!entry.isUsable) {
            return false;
        }
        // Writers put the locales in ascending order, so the end is the place as a rule.
        strings.insert_or_assign(strings.end(), std::move(entry.pair.locale), std::move(entry.pair.text));
    }
    out.*orvcapsule::serialization::detail::UIStringTable::kStrings = std::move(strings);
    return true;
}

bool Codec<orvcapsule::UIString>::Check(const JSONNode& node)
{
    const auto isText = [](const JSONNode* part) { return part == nullptr || part->IsString(); };
    const auto isEntry = [&isText](const JSONNode& element) {
        return element.IsObject() && isText(element.Find(orvcapsule::CAPSULE_STR_STR)) &&
               isText(element.Find(orvcapsule::CAPSULE_LOCALE_STR));
    };
    const JSONNode* list = node.Find(orvcapsule::CAPSULE_STRDB_STR);
    if (list == nullptr || !list->IsArray()) {
        return false;
    }
    return std::all_of(list->Children().begin(), list->Children().end(), isEntry);
}

void Codec<orvcapsule::UIString>::Write(JSONSink& sink, const orvcapsule::UIString& value)
{
    sink.BeginObject();
    sink.PlainKey(orvcapsule::CAPSULE_STRDB_STR);
    sink.BeginArray();
    for (const Entry& entry : value.GetLocaleStrings()) {
        TableWalker<Entry, kEntryFields>::Write(sink, entry, nullptr);
    }
    sink.EndArray();
    sink.EndObject();
}

} // namespace orvcore::serialization::detail
