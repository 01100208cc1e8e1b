#include <tools/support/fonts/MachineFonts.h>

#include <orvcore/text/Strings.h>

#include <dwrite.h>

#include <memory>

namespace orvtools {

namespace {

struct Release {
    void operator()(IUnknown* object) const
    {
        object->Release();
    }
};
template <class T>
using Com = std::unique_ptr<T, Release>;

// What a COM call puts into its last argument; empty when it failed.
template <class T, class Call>
Com<T> Get(Call&& call)
{
    T* object = nullptr;
    return Com<T>(SUCCEEDED(call(&object)) ? object : nullptr);
}

// A name in each of its languages.
void AddNames(IDWriteLocalizedStrings* texts, std::set<std::string>& names)
{
    for (UINT32 i = 0; texts != nullptr && i < texts->GetCount(); ++i) {
        UINT32 length = 0;
        if (FAILED(texts->GetStringLength(i, &length))) {
            continue;
        }
        std::wstring text(length + 1, L'\0'); // the call writes an end mark too
        if (SUCCEEDED(texts->GetString(i, text.data(), length + 1))) {
            names.insert(orvcore::ToNarrow(orvcore::UTF16String(text.begin(), text.end() - 1)));
        }
    }
}

void AddFont(IDWriteFont& font, std::set<std::string>& names)
{
    for (const auto kind : {DWRITE_INFORMATIONAL_STRING_POSTSCRIPT_NAME, DWRITE_INFORMATIONAL_STRING_FULL_NAME}) {
        BOOL exists = FALSE;
        const auto texts =
            Get<IDWriteLocalizedStrings>([&](auto** out) { return font.GetInformationalStrings(kind, out, &exists); });
        AddNames(texts.get(), names);
    }
}

void AddFamily(IDWriteFontFamily& family, std::set<std::string>& names)
{
    AddNames(Get<IDWriteLocalizedStrings>([&](auto** out) { return family.GetFamilyNames(out); }).get(), names);
    for (UINT32 i = 0; i < family.GetFontCount(); ++i) {
        if (const auto font = Get<IDWriteFont>([&](auto** out) { return family.GetFont(i, out); })) {
            AddFont(*font, names);
        }
    }
}

} // namespace

std::optional<std::set<std::string>> InstalledFontNames()
{
    const auto factory = Get<IDWriteFactory>([](auto** out) {
        return ::DWriteCreateFactory(DWRITE_FACTORY_TYPE_SHARED, __uuidof(IDWriteFactory),
                                     reinterpret_cast<IUnknown**>(out));
    });
    const auto fonts =
        factory ? Get<IDWriteFontCollection>([&](auto** out) { return factory->GetSystemFontCollection(out, FALSE); })
                : nullptr;
    if (!fonts) {
        return std::nullopt;
    }
    std::set<std::string> names;
    for (UINT32 i = 0; i < fonts->GetFontFamilyCount(); ++i) {
        if (const auto family = Get<IDWriteFontFamily>([&](auto** out) { return fonts->GetFontFamily(i, out); })) {
            AddFamily(*family, names);
        }
    }
    return names;
}

} // namespace orvtools
