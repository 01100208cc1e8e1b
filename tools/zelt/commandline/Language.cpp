#include <tools/zelt/commandline/Language.h>

#include <tools/zelt/commandline/Locale.h>

#include <cstdlib>

namespace zelt {

namespace {

std::string Variable(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

} // namespace

std::string ChosenLanguage(const std::string& option)
{
    if (!option.empty()) {
        return option;
    }
    if (const std::string ours = Variable("ZELT_LANGUAGE"); !ours.empty()) {
        // A wrong name shows another language's texts without any error, so it is told. The system's variables have
        // other forms by right and are only translated.
        WarnOfLocale("ZELT_LANGUAGE", ours);
        return ours;
    }
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const std::string systems = Variable(name); !systems.empty()) {
            const std::string locale = LikelyLocale(systems); // "C" and "POSIX" name none
            return locale.empty() ? "en_US" : locale;
        }
    }
    return "en_US";
}

} // namespace zelt
