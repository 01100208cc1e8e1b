#include <tools/zelt/commandline/Locale.h>

#include <tools/support/ASCII.h>
#include <tools/zelt/output/Errors.h>

#include <algorithm>

namespace zelt {

namespace {

// Takes the part before the first separator off `rest`.
std::string TakePart(std::string_view& rest)
{
    const std::size_t end = std::min(rest.find_first_of("_- "), rest.size());
    const std::string part(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return part;
}

} // namespace

std::string LikelyLocale(std::string_view spelling)
{
    spelling = spelling.substr(0, spelling.find_first_of(".@")); // "de_DE.UTF-8", "de_DE@euro"
    std::string language = TakePart(spelling);
    std::string script;
    std::string country;
    while (!spelling.empty()) {
        std::string part = TakePart(spelling);
        std::string& place = part.size() == 4 ? script : country;
        if (!place.empty()) {
            return {};
        }
        place = std::move(part);
    }
    const std::string all = language + script + country;
    if (language.size() != 2 || (country.size() != 2 && !(country.empty() && script.empty())) ||
        !std::all_of(all.begin(), all.end(), &orvtools::IsLetter)) {
        return {};
    }
    std::transform(language.begin(), language.end(), language.begin(), &orvtools::ToLower);
    std::transform(script.begin(), script.end(), script.begin(), &orvtools::ToLower);
    std::transform(country.begin(), country.end(), country.begin(), &orvtools::ToUpper);
    if (!script.empty()) {
        script.front() = orvtools::ToUpper(script.front());
        script.insert(0, 1, '_');
    }
    return language + script + (country.empty() ? "" : '_' + country);
}

void WarnOfLocale(std::string_view option, std::string_view locale)
{
    const std::string likely = LikelyLocale(locale);
    if (likely != locale) {
        ReportError("warning: " + std::string(option),
                    '"' + std::string(locale) + "\" is not of the form ll, ll_CC or ll_Script_CC" +
                        (likely.empty() ? "" : "; did you mean \"" + likely + "\"?"));
    }
}

} // namespace zelt
