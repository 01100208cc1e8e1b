#include <bench/SearchBenchData.h>

#include <array>
#include <random>

namespace bench {

namespace {

using Words = std::vector<std::u8string>;

struct Language {
    const char8_t* folder;
    const char8_t* between; ///< what stands between two words of a name
    Words syllables;        ///< three make a tag-sized word
    Words words;            ///< real words, common in names and tags
};

const std::vector<Language>& Languages()
{
    static const std::vector<Language> languages = {
        {u8"en",
         u8" ",
         {u8"ti", u8"low", u8"er", u8"bar", u8"glow", u8"en", u8"ste", u8"cra"},
         {u8"Title", u8"Lower Third", u8"Intro", u8"Countdown", u8"Bold", u8"Clean"}},
        {u8"de",
         u8" ",
         {u8"über", u8"stra", u8"ße", u8"schö", u8"bild", u8"ung", u8"ver", u8"lauf"},
         {u8"Überschrift", u8"Bauchbinde", u8"Straße", u8"Schlüssel", u8"Größe"}},
        {u8"fr",
         u8" ",
         {u8"é", u8"tra", u8"vers", u8"ment", u8"çon", u8"là", u8"où", u8"rê"},
         {u8"Générique", u8"Étiquette", u8"Élégant", u8"Carrousel"}},
        {u8"pl",
         u8" ",
         {u8"ło", u8"dź", u8"paw", u8"eł", u8"ście", u8"żka", u8"nap", u8"rzy"},
         {u8"Napisy", u8"Łódź", u8"Paweł", u8"Ścieżka"}},
        {u8"no",
         u8" ",
         {u8"øk", u8"land", u8"å", u8"sen", u8"bjø", u8"rn", u8"fjell", u8"sæ"},
         {u8"Økland", u8"Tittel", u8"Undertekst", u8"Blå"}},
        {u8"ru",
         u8" ",
         {u8"за", u8"го", u8"ло", u8"вок", u8"ти", u8"тр", u8"ный", u8"ёж"},
         {u8"Заголовок", u8"Титры", u8"Яркий", u8"Ёлка"}},
        {u8"ja",
         u8"",
         {u8"字", u8"幕", u8"タイ", u8"トル", u8"動", u8"画", u8"背", u8"景"},
         {u8"字幕", u8"タイトル", u8"背景", u8"アニメ"}},
        {u8"zh",
         u8"",
         {u8"标", u8"题", u8"片", u8"头", u8"动", u8"态", u8"背", u8"景"},
         {u8"标题", u8"片头", u8"动态", u8"婚礼"}},
        {u8"ko",
         u8" ",
         {u8"자", u8"막", u8"제", u8"목", u8"화", u8"면", u8"영", u8"상"},
         {u8"자막", u8"제목", u8"영상", u8"배경"}},
        {u8"ar",
         u8" ",
         {u8"عن", u8"وان", u8"شا", u8"شة", u8"فيد", u8"يو", u8"خل", u8"فية"},
         {u8"عنوان", u8"فيديو", u8"خلفية", u8"شريط"}},
    };
    return languages;
}

class Maker {
public:
    Template Make(std::size_t number)
    {
        const Language& language = Languages()[number % Languages().size()];
        const std::u8string digits = Digits(number);
        Template made;
        const std::u8string name = Pick(language.words) + language.between + Word(language) + language.between +
                                   Word(language) + u8" " + digits;
        made.path = u8"/home/user/Documents/Motion Graphics Templates/" + std::u8string(language.folder) + u8"/" +
                    Digits(number % 97) + u8"/" + name + u8".zelt";
        made.texts = {name, Pick(language.words), Tag(language), Tag(language), Pick(Languages()[0].words)};
        return made;
    }

private:
    const std::u8string& Pick(const Words& words)
    {
        return words[random_() % words.size()];
    }
    std::u8string Word(const Language& language)
    {
        return Pick(language.syllables) + Pick(language.syllables) + Pick(language.syllables);
    }
    std::u8string Tag(const Language& language)
    {
        return Pick(language.syllables) + Pick(language.syllables) + (random_() % 4 == 0 ? Pick(language.words) : u8"");
    }
    static std::u8string Digits(std::size_t number)
    {
        const std::string text = std::to_string(number);
        return {text.begin(), text.end()};
    }

    std::mt19937 random_{20240531};
};

} // namespace

std::vector<Template> MakeTemplates(std::size_t count)
{
    Maker maker;
    std::vector<Template> templates;
    templates.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        templates.push_back(maker.Make(i));
    }
    return templates;
}

} // namespace bench
