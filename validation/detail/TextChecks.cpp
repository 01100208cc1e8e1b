#include <validation/detail/DefinitionChecks.h>
#include <validation/detail/Locales.h>

#include <capsule/DefinitionKeys.h>

#include <map>
#include <set>

namespace orvcapsule::detail {

// What counts as a language of the template: a locale that any usable text has. A text that falls back to American
// English needs only the languages that most texts have, since templates translate a few texts on purpose.

namespace {

constexpr std::string_view kFallback = "en_US";
constexpr std::string_view kFormOfLocales = "a language and a country, such as \"de_DE\"";

using LocaleCounts = std::map<std::string_view, std::size_t>;

std::string_view LocaleOf(const PlacedValue& entry)
{
    const PlacedValue locale = entry.Find(CAPSULE_LOCALE_STR);
    return locale ? locale.Text() : kFallback; // an entry without one is American English
}

// Whether readers take the text as a whole.
bool IsUsable(const PlacedValue& whole)
{
    const PlacedValue entries = whole.Find(CAPSULE_STRDB_STR);
    if (!entries || !entries->IsArray()) {
        return false;
    }
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const PlacedValue locale = entries[i].Find(CAPSULE_LOCALE_STR);
        const PlacedValue text = entries[i].Find(CAPSULE_STR_STR);
        if (!entries[i]->IsObject() || (locale && !locale->IsString()) || (text && !text->IsString())) {
            return false;
        }
    }
    return true;
}

void TellBadLocale(const PlacedValue& place, std::string_view locale, bool isKey, DefinitionReport& report)
{
    if (!report.HasRoom(Severity::Warning)) {
        return;
    }
    Note note{Severity::Warning, "BadLocale", Quoted(locale) + " is no locale: no host asks for it",
              std::string(kFormOfLocales), NearestLocale(locale)};
    isKey ? report.AtKey(place, std::move(note)) : report.At(place, std::move(note));
}

// One text by itself. @return its locales
std::set<std::string_view> CheckEntries(const MetText& text, DefinitionReport& report)
{
    std::set<std::string_view> locales;
    const PlacedValue entries = text.value.Find(CAPSULE_STRDB_STR);
    bool isEmpty = true;
    PlacedValue emptyOne;
    for (std::size_t i = 0; entries && i < entries.size(); ++i) {
        const std::string_view locale = LocaleOf(entries[i]);
        const PlacedValue named = entries[i].Find(CAPSULE_LOCALE_STR);
        if (!locales.insert(locale).second) {
            report.At(named ? named : entries[i],
                      {Severity::Warning, "RepeatedLocale",
                       "the text has more than one entry for " + Quoted(locale) + ": only the last one counts"});
        } else if (!IsLocale(locale)) {
            TellBadLocale(named, locale, false, report);
        }
        const bool hasText = !entries[i].Text(CAPSULE_STR_STR).empty();
        isEmpty = isEmpty && !hasText;
        emptyOne = hasText || emptyOne ? emptyOne : entries[i];
    }
    if (text.role == MetText::Role::Label && isEmpty) {
        report.At(text.value, {Severity::Warning, "EmptyName", "there is no text in any language", "a text"});
    } else if (text.role != MetText::Role::Value && !isEmpty && emptyOne) {
        report.At(emptyOne,
                  {Severity::Warning, "EmptyName",
                   "the text for " + Quoted(LocaleOf(emptyOne)) + " is empty: hosts of that language show none",
                   "a text, or no entry"});
    }
    return locales;
}

// Of texts that were checked: what languages they have.
struct Languages {
    std::vector<std::string_view> all;
    std::vector<std::string_view> ofMost; ///< more than half of the texts have them
};

Languages LanguagesOf(const LocaleCounts& counts, std::size_t texts)
{
    Languages languages;
    for (const auto& [locale, count] : counts) {
        if (IsLocale(locale)) {
            languages.all.push_back(locale);
            if (count * 2 > texts) {
                languages.ofMost.push_back(locale);
            }
        }
    }
    return languages;
}

// A text without a language falls back to American English, so that a few translated texts are no promise of more. One
// without that shows whatever comes first.
void TellMissing(const PlacedValue& text, const std::set<std::string_view>& locales, const Languages& languages,
                 DefinitionReport& report)
{
    // Bytes of a list of languages in one line; a hostile text may have thousands.
    constexpr std::size_t kLongEnough = 100;
    const bool fallsBack = locales.contains(kFallback);
    std::string missing;
    for (const std::string_view language : fallsBack ? languages.ofMost : languages.all) {
        if (!locales.contains(language)) {
            missing += (missing.empty() ? "" : ", ") + Quoted(language);
            if (missing.size() > kLongEnough) {
                break;
            }
        }
    }
    if (!missing.empty() && !locales.empty()) {
        report.At(text, {Severity::Warning, "MissingText",
                         "there is no text for " + missing + ", which other texts have; hosts show the one for " +
                             Quoted(fallsBack ? kFallback : *locales.begin()),
                         "a text for " + missing});
    }
}

} // namespace

bool CheckLocaleKey(const PlacedValue& member, DefinitionReport& report)
{
    const bool isLocale = IsLocale(member->Key());
    if (!isLocale) {
        TellBadLocale(member, member->Key(), true, report);
    }
    return isLocale;
}

void CheckTexts(const std::vector<MetText>& texts, DefinitionReport& report)
{
    LocaleCounts counts;
    std::vector<std::pair<PlacedValue, std::set<std::string_view>>> usable;
    // Texts that readers do not take as a whole have been told of by CheckShape and show nothing, so they do not count.
    for (const MetText& text : texts) {
        if (IsUsable(text.value)) {
            usable.emplace_back(text.value, CheckEntries(text, report));
            for (const std::string_view locale : usable.back().second) {
                ++counts[locale];
            }
        }
    }
    const Languages languages = LanguagesOf(counts, usable.size());
    for (std::size_t i = 0; i < usable.size() && report.HasRoom(Severity::Warning); ++i) {
        TellMissing(usable[i].first, usable[i].second, languages, report);
    }
}

} // namespace orvcapsule::detail
