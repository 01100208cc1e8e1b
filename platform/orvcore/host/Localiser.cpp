#include <orvcore/host/Application.h>
#include <orvcore/host/Localiser.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/text/shared/ASCII.h>

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <shared_mutex>

// A key is a path and, behind "=", the text for want of a translation: "$$$/Panel/Title=Templates". A dictionary has a
// line of the same form for each text, with "\n" for a line's end; "#" begins a remark. In the texts "@0" to "@9" stand
// for arguments.

namespace orvcore {

namespace {

using Dictionary = std::map<std::string, UTF8String, std::less<>>;

struct Dictionaries {
    std::shared_mutex mutex;
    std::map<std::string, Dictionary, std::less<>> byLanguage;
};

Dictionaries& TheDictionaries()
{
    static NoDestructor<Dictionaries> dictionaries;
    return *dictionaries;
}

constexpr std::string_view kPrefix = "$$$/";

std::optional<UTF8String> Find(std::string_view language, std::string_view name)
{
    const std::shared_lock lock(TheDictionaries().mutex);
    const auto& all = TheDictionaries().byLanguage;
    // "de_AT", then "de".
    for (const std::string_view candidate : {language, language.substr(0, language.find_first_of("_-"))}) {
        if (const auto dictionary = all.find(candidate); dictionary != all.end()) {
            if (const auto entry = dictionary->second.find(name); entry != dictionary->second.end()) {
                return entry->second;
            }
        }
    }
    return std::nullopt;
}

UTF8String Unescape(std::string_view text)
{
    UTF8String out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '\\' && i + 1 < text.size() && (text[i + 1] == 'n' || text[i + 1] == '\\')) {
            c = text[++i] == 'n' ? '\n' : '\\';
        }
        out.push_back(static_cast<char8_t>(c));
    }
    return out;
}

UTF8String Substitute(const UTF8String& text, std::initializer_list<std::u8string_view> arguments)
{
    UTF8String out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        // An "@" without such an argument stays: e-mail addresses are texts, too. What is put in is not looked through
        // again.
        if (text[i] == u8'@' && i + 1 < text.size() && IsASCIIDigit(text[i + 1])) {
            const auto index = static_cast<std::size_t>(text[i + 1] - u8'0');
            if (index < arguments.size()) {
                out += arguments.begin()[index];
                ++i;
                continue;
            }
        }
        out.push_back(text[i]);
    }
    return out;
}

} // namespace

UTF8String Localiser::Resolve(std::string_view key, std::initializer_list<std::u8string_view> arguments)
{
    if (!key.starts_with(kPrefix)) {
        return Substitute(ToUTF8(key), arguments);
    }
    // The dictionary goes by the path alone: a translation stays when the text in the code is changed.
    const std::size_t equals = key.find('=');
    std::optional<UTF8String> text = Find(Application::GetLanguage(), key.substr(0, equals));
    if (!text) {
        text = ToUTF8(equals == std::string_view::npos ? key : key.substr(equals + 1));
    }
    return Substitute(*text, arguments);
}

std::size_t Localiser::LoadDictionary(const std::string& language, std::string_view dictionary)
{
    // Editors on Windows put it there; it would be a part of the first key.
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (dictionary.starts_with(kByteOrderMark)) {
        dictionary.remove_prefix(kByteOrderMark.size());
    }
    std::size_t ignored = 0;
    // For the whole of the loading: no thread sees a dictionary that is half there.
    const std::unique_lock lock(TheDictionaries().mutex);
    Dictionary& entries = TheDictionaries().byLanguage[language];
    while (!dictionary.empty()) {
        const std::size_t end = dictionary.find('\n');
        std::string_view line = dictionary.substr(0, end);
        dictionary.remove_prefix(end == std::string_view::npos ? dictionary.size() : end + 1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        const std::size_t equals = line.find('=');
        if (line.starts_with(kPrefix) && equals != std::string_view::npos) {
            entries.insert_or_assign(std::string(line.substr(0, equals)), Unescape(line.substr(equals + 1)));
        } else if (!line.empty() && !line.starts_with('#')) {
            ++ignored;
        }
    }
    return ignored;
}

void Localiser::UnloadDictionary(const std::string& language)
{
    const std::unique_lock lock(TheDictionaries().mutex);
    TheDictionaries().byLanguage.erase(language);
}

} // namespace orvcore
