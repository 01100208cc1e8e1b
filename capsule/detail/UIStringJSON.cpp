#include <capsule/detail/UIStringJSON.h>

#include <capsule/DefinitionKeys.h>
#include <capsule/detail/Locale.h>

namespace orvcapsule::serialization::detail {

struct UIStringTable {
    static constexpr auto kStrings = &UIString::strings_;
};

} // namespace orvcapsule::serialization::detail

namespace orvcore::serialization::detail {

namespace {

using orvcapsule::LocStrPair;
using Entry = std::map<UTF16String, UTF16String>::value_type;

// Entries are read as pairs, in list order, and written straight from the map.
constexpr auto kEntryFields =
    Fields(CustomField(
               orvcapsule::CAPSULE_STR_STR, Presence::kLenient,
               [](const JSONNode& node, LocStrPair& pair) { return Codec<UTF16String>::Read(node, pair.text); },
               [](JSONSink& sink, const Entry& entry) { Codec<UTF16String>::Write(sink, entry.second); }),
           CustomField(
               orvcapsule::CAPSULE_LOCALE_STR, Presence::kLenient,
               [](const JSONNode& node, LocStrPair& pair) { return Codec<UTF16String>::Read(node, pair.locale); },
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
        LocStrPair pair{UTF16String(orvcapsule::detail::kFallbackLocale), {}};
        TableWalker<LocStrPair, kEntryFields>::Read(element, pair, nullptr);
        // Writers put the locales in ascending order, so the end is the place as a rule.
        strings.insert_or_assign(strings.end(), std::move(pair.locale), std::move(pair.text));
    }
    out.*orvcapsule::serialization::detail::UIStringTable::kStrings = std::move(strings);
    return true;
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
