#include <validation/detail/Locales.h>

#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/text/NearestName.h>

#include <string>
#include <vector>

namespace orvcapsule::detail {

// Lists of our own and not the system's: what a host has depends on its installation, and a template must be judged
// alike on every machine. Languages of three letters and numbered regions are accepted by their form.

namespace {

// Codes of two letters, one after the other.
constexpr std::string_view kLanguages = "aaabaeafakamanarasavayazbabebgbhbibmbnbobrbscacechcocrcscucvcydadedvdzeeeleneo"
                                        "eseteufafffifjfofrfygagdglgngugvhahehi"
                                        "hohrhthuhyhziaidieigiiikioisitiujajvkakgkikjkkklkmknkokrkskukvkwkylalblglilnlo"
                                        "ltlulvmgmhmimkmlmnmrmsmtmynanbndnengnl"
                                        "nnnonrnvnyocojomorospapiplpsptqurmrnrorurwsascsdsesgsiskslsmsnsosqsrssstsusvsw"
                                        "tatetgthtitktltntotrtstttwtyugukuruzve"
                                        "vivowawoxhyiyozazhzu";
constexpr std::string_view kCountries = "ADAEAFAGAIALAMAOAQARASATAUAWAXAZBABBBDBEBFBGBHBIBJBLBMBNBOBQBRBSBTBVBWBYBZCACC"
                                        "CDCFCGCHCICKCLCMCNCOCRCUCVCWCXCYCZDEDJDK"
                                        "DMDODZECEEEGEHERESETFIFJFKFMFOFRGAGBGDGEGFGGGHGIGLGMGNGPGQGRGSGTGUGWGYHKHMHNHR"
                                        "HTHUIDIEILIMINIOIQIRISITJEJMJOJPKEKGKHKI"
                                        "KMKNKPKRKWKYKZLALBLCLILKLRLSLTLULVLYMAMCMDMEMFMGMHMKMLMMMNMOMPMQMRMSMTMUMVMWMX"
                                        "MYMZNANCNENFNGNINLNONPNRNUNZOMPAPEPFPGPH"
                                        "PKPLPMPNPRPSPTPWPYQARERORSRURWSASBSCSDSESGSHSISJSKSLSMSNSOSRSSSTSVSXSYSZTCTDTF"
                                        "TGTHTJTKTLTMTNTOTRTTTVTWTZUAUGUMUSUYUZVA"
                                        "VCVEVGVIVNVUWFWSYEYTZAZMZW";
constexpr std::string_view kSmall = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view kCapital = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::string_view kDigits = "0123456789";

bool IsOf(std::string_view text, std::string_view letters) noexcept
{
    return text.find_first_not_of(letters) == text.npos;
}

bool IsAmong(std::string_view code, std::string_view codes) noexcept
{
    for (std::size_t at = 0; at < codes.size(); at += 2) {
        if (codes.substr(at, 2) == code) {
            return true;
        }
    }
    return false;
}

bool IsLanguage(std::string_view part) noexcept
{
    return IsOf(part, kSmall) && (part.size() == 3 || (part.size() == 2 && IsAmong(part, kLanguages)));
}

bool IsRegion(std::string_view part) noexcept
{
    return part.size() == 2 ? IsAmong(part, kCountries) : part.size() == 3 && IsOf(part, kDigits);
}

bool IsScript(std::string_view part) noexcept
{
    return part.size() == 4 && IsOf(part.substr(0, 1), kCapital) && IsOf(part.substr(1), kSmall);
}

// The letters of a short name, small ones.
std::string Letters(std::string_view name)
{
    // A name in the text may be of any length; nothing usual has more letters than five.
    constexpr std::size_t kLongest = 8;
    std::string letters;
    for (const char c : name.substr(0, kLongest)) {
        if (const std::size_t at = kCapital.find(c); at != kCapital.npos) {
            letters += kSmall[at];
        } else if (kSmall.find(c) != kSmall.npos) {
            letters += c;
        }
    }
    return letters;
}

} // namespace

bool IsLocale(std::string_view name) noexcept
{
    const std::size_t first = name.find('_');
    const std::size_t last = name.rfind('_');
    return first != name.npos && IsLanguage(name.substr(0, first)) && IsRegion(name.substr(last + 1)) &&
           (first == last || IsScript(name.substr(first + 1, last - first - 1)));
}

std::string NearestLocale(std::string_view name)
{
    static orvcore::NoDestructor<std::vector<std::string>> usual(std::vector<std::string>{
        "en_US", "de_DE", "fr_FR", "es_ES", "it_IT", "ja_JP", "ko_KR", "pt_BR", "ru_RU", "zh_CN", "zh_TW", "en_GB",
        "nl_NL", "sv_SE", "da_DK", "nb_NO", "fi_FI", "pl_PL", "cs_CZ", "hu_HU", "tr_TR", "uk_UA", "ar_SA", "he_IL",
        "pt_PT", "es_MX", "fr_CA", "en_CA", "de_AT", "de_CH", "el_GR", "ro_RO", "hi_IN", "th_TH", "vi_VN", "id_ID"});
    // Countries that are taken for languages, and the other way round.
    constexpr struct {
        std::string_view letters;
        std::string_view meant;
    } kHabits[] = {{"jp", "ja_JP"}, {"jpjp", "ja_JP"}, {"cn", "zh_CN"},   {"cncn", "zh_CN"},
                   {"us", "en_US"}, {"uk", "en_GB"},   {"enuk", "en_GB"}, {"br", "pt_BR"},
                   {"kr", "ko_KR"}, {"krkr", "ko_KR"}, {"dk", "da_DK"},   {"cz", "cs_CZ"}};
    const std::string plain = Letters(name);
    for (const auto& habit : kHabits) {
        if (habit.letters == plain) {
            return std::string(habit.meant);
        }
    }
    for (const std::string& locale : *usual) { // a language alone, without its separator, or the other way round
        const std::string letters = Letters(locale);
        if (plain == letters.substr(0, 2) || plain == letters || plain == letters.substr(2) + letters.substr(0, 2)) {
            return locale;
        }
    }
    return orvcore::NearestName(name, *usual);
}

} // namespace orvcapsule::detail
