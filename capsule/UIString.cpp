#include <capsule/UIString.h>

#include <capsule/detail/Locale.h>

namespace orvcapsule {

UIString::UIString()
    // Not an empty map: the text for the application's language is there, and empty. Documents are written so.
    : UIString(UTF16String())
{
}

UIString::UIString(const UTF16String& text)
{
    SetString(text);
}

UIString::UIString(const std::vector<LocStrPair>& pairs)
{
    for (const LocStrPair& pair : pairs) {
        // Of a locale that comes twice the last one counts, as everywhere (docs/decisions/repeated-keys.md).
        strings_.insert_or_assign(pair.locale, pair.text);
    }
}

UIString::UIString(std::initializer_list<LocStrPair> pairs)
    : UIString(std::vector<LocStrPair>(pairs))
{
}

UTF16String UIString::GetString() const
{
    const auto found = detail::FindForLanguage(strings_, detail::kFallbackLocale);
    return found != strings_.end() ? found->second : UTF16String();
}

void UIString::SetString(const UTF16String& text)
{
    SetString(text, detail::CurrentLocale());
}

void UIString::SetString(const UTF16String& text, const UTF16String& locale)
{
    strings_.insert_or_assign(locale, text);
}

} // namespace orvcapsule
