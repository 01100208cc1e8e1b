#include <capsule/detail/VersionGate.h>

#include <capsule/Capsule.h>
#include <capsule/DefinitionKeys.h>

#include <charconv>
#include <cmath>

namespace orvcapsule::serialization::detail {

namespace {

// Readers of all releases look at three characters, so the format's versions are "a.b": to them "2.10" would be "2.1".
constexpr std::size_t kVersionLength = 3;

// The number at the beginning of a text in single precision, or 0.
// Read without regard to the locale of the process, where a comma may separate the decimals. Both sides of the
// comparison come through here, so that equal texts give equal numbers.
float LeadingNumber(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || (text.front() >= '\t' && text.front() <= '\r'))) {
        text.remove_prefix(1);
    }
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
    }
    float number = 0;
    // Out of range or no number at all: `number` stays 0, and the document counts as an old one, which the tables then
    // judge.
    std::from_chars(text.data(), text.data() + text.size(), number);
    return std::isfinite(number) ? number : 0; // "inf" and "nan" are words here
}

} // namespace

DeclaredVersion FindDeclaredVersion(std::u8string_view json)
{
    const std::u8string_view word = orvcore::AsUTF8(CAPSULE_API_VERSION_STR);
    const std::size_t at = json.find(word);
    if (at == std::u8string_view::npos) {
        return {};
    }
    // Past the word and its own closing quote. Without a further quote the beginning of the text stands in: readers
    // of all releases have done so, and such documents exist.
    const std::size_t quote = json.find(u8'"', at + word.size() + 1);
    const std::size_t begin = quote == std::u8string_view::npos ? 0 : quote + 1;
    return {true, json.substr(begin, kVersionLength)};
}

bool PassesVersionGate(std::u8string_view json)
{
    const DeclaredVersion declared = FindDeclaredVersion(json);
    const std::string current = Capsule::GetCurrentAPIVersion();
    // A text without the word is no definition. One whose version is not a number passes: as 0 it is not newer.
    return declared.found && !(LeadingNumber(orvcore::AsNarrow(declared.text)) > LeadingNumber(current));
}

} // namespace orvcapsule::serialization::detail
