#pragma once

#include <orvcore/json/JSONSplice.h>

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zelt {

/// Where a localised text stands in a document: a member of an object, or an element of a list.
struct TextPlace {
    const orvcore::serialization::JSONOutline* owner = nullptr; ///< the object; null: an element
    std::string_view key;                                       ///< its key in the object
    const orvcore::serialization::JSONOutline* value = nullptr; ///< null when there is no such member
};

/// Tells of each localised text of a definition, in the document's order, with a key that names it:
///     "name"            the template's name
///     "ID/label"        a control's label; "ID/tip" its tip, "ID/value" the text of a text or comment
///     "ID/entry/0"      an entry of a menu
///     "ID/heading/0"    the heading of a spreadsheet's column
void VisitTexts(const orvcore::serialization::JSONSplice& document,
                const std::function<void(const std::string& key, const TextPlace& place)>& visit);

/// The texts of one place by locale; empty when there is none, or one that readers do not take.
std::map<std::string, std::string> TextsAt(const orvcore::serialization::JSONSplice& document, const TextPlace& place);

/// The text that a JSON string stands for; empty for any other value and for null.
std::string DecodedText(const orvcore::serialization::JSONSplice& document,
                        const orvcore::serialization::JSONOutline* text);

/// The list of a localised text's entries; null where there is none that readers take.
const orvcore::serialization::JSONOutline* TextEntries(const orvcore::serialization::JSONOutline* value);

/// The locale of an entry; one that names none is "en_US".
std::string LocaleOfEntry(const orvcore::serialization::JSONSplice& document,
                          const orvcore::serialization::JSONOutline& entry);

} // namespace zelt
