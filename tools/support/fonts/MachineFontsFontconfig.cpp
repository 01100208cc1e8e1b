#include <tools/support/fonts/MachineFonts.h>

#include <fontconfig/fontconfig.h>

#include <memory>

namespace orvtools {

namespace {

template <class T>
using Owned = std::unique_ptr<T, void (*)(T*)>;

void AddNames(const FcPattern* font, std::set<std::string>& names)
{
    for (const char* property : {FC_POSTSCRIPT_NAME, FC_FULLNAME, FC_FAMILY}) {
        FcChar8* name = nullptr; // the pattern's own
        for (int i = 0; FcPatternGetString(font, property, i, &name) == FcResultMatch; ++i) {
            names.emplace(reinterpret_cast<const char*>(name));
        }
    }
}

} // namespace

std::optional<std::set<std::string>> InstalledFontNames()
{
    // A configuration of its own, which is freed: the library's global one would stay until the process ends.
    const Owned<FcConfig> config(FcInitLoadConfigAndFonts(), &FcConfigDestroy);
    const Owned<FcPattern> all(FcPatternCreate(), &FcPatternDestroy);
    const Owned<FcObjectSet> properties(FcObjectSetBuild(FC_POSTSCRIPT_NAME, FC_FULLNAME, FC_FAMILY, nullptr),
                                        &FcObjectSetDestroy);
    if (!config || !all || !properties) {
        return std::nullopt;
    }
    const Owned<FcFontSet> fonts(FcFontList(config.get(), all.get(), properties.get()), &FcFontSetDestroy);
    if (!fonts) {
        return std::nullopt;
    }
    std::set<std::string> names;
    for (int i = 0; i < fonts->nfont; ++i) {
        AddNames(fonts->fonts[i], names);
    }
    return names;
}

} // namespace orvtools
