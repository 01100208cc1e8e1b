#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

#include <initializer_list>
#include <map>
#include <utility>
#include <vector>

namespace orvcapsule {

namespace serialization::detail {
struct UIStringTable;
} // namespace serialization::detail

using orvcore::UTF16String;
using orvcore::UTF8String;

/// One text of a `UIString`.
struct LocStrPair {
    UTF16String locale; ///< locale name such as "en_US", the map key
    UTF16String text;   ///< the text for that locale
};

/// A localisable text: one text per locale, with a single rule for picking the one to show.
///
/// A plain value without locks: concurrent reads are safe, a writer needs exclusive access. The application language
/// (`orvcore::Application::GetLanguage`) is fetched at each call that needs it. Any text is accepted as a locale,
/// the empty one included. Locales are ordered by UTF-16 code units, a prefix before the longer name.
class ORVCAPSULE_API UIString {
public:
    /// One empty text under the application language.
    UIString();
    /// `text` under the application language.
    explicit UIString(const UTF16String& text);
    /// One entry per pair, in list order: a later pair with the same locale replaces the earlier text. An empty list
    /// gives the only `UIString` without any entry.
    explicit UIString(const std::vector<LocStrPair>& pairs);
    /// The same for pairs in braces: `UIString({{u"en_US", u"Title"}, {u"de_DE", u"Titel"}})`, `UIString({})`.
    explicit UIString(std::initializer_list<LocStrPair> pairs);
    /// The text for the application language; else the one for "en_US"; else the one of the smallest locale; else
    /// an empty text. An entry that holds an empty text counts as found.
    UTF16String GetString() const;
    /// Sets or replaces the text of the application language.
    void SetString(const UTF16String& text);
    /// Sets or replaces the text of `locale`. The text comes first.
    void SetString(const UTF16String& text, const UTF16String& locale);

    /// All texts by locale; valid as long as this object is. A call on a temporary moves the texts out.
    const std::map<UTF16String, UTF16String>& GetLocaleStrings() const& noexcept
    {
        return strings_;
    }
    std::map<UTF16String, UTF16String> GetLocaleStrings() &&
    {
        return std::move(strings_);
    }

    /// Equal when both hold the same locales and texts, code unit for code unit.
    bool operator==(const UIString& other) const = default;

private:
    friend struct serialization::detail::UIStringTable;

    std::map<UTF16String, UTF16String> strings_;
};

} // namespace orvcapsule
