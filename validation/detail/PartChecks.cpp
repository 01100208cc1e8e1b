#include <validation/detail/PartChecks.h>

#include <validation/MediaContent.h>
#include <validation/detail/Locales.h>

#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/text/NearestName.h>
#include <orvcore/text/Printable.h>
#include <package/PackageNames.h>

#include <algorithm>
#include <array>

namespace orvcapsule::detail {

// Everything here is about names and first bytes; what a part holds is its host's business. Unknown parts are legal,
// and packages do hold things of their authors', so only a name that is nearly a known one is told.

namespace {

constexpr std::string_view kPictureFolder = "Thumbnails/";
constexpr std::array<std::string_view, 4> kLocalizedExtensions = {".png", ".mp4", ".tsgraphic", ".cvgraphic"};

std::string_view NameOf(const Part& part)
{
    return orvcore::AsNarrow(part.name);
}

// The name of a part that may come in variants for a language.
struct LocalizedName {
    std::string_view stem;      // "thumb" or "project"; empty when it is no such name
    std::string_view separator; // "_", or what stands in its place; empty when there is no locale
    std::string_view locale;
    std::string_view extension;

    bool IsMeant() const
    {
        return separator.empty() || (separator == "_" && IsLocale(locale));
    }
};

LocalizedName Split(std::string_view name)
{
    for (const std::string_view stem : {"thumb", "project"}) {
        for (const std::string_view extension : kLocalizedExtensions) {
            // Pictures and films (".png", ".mp4") are previews, the two long extensions are projects.
            const bool goesWith = (stem == "thumb") == (extension.size() == 4);
            if (goesWith && name.starts_with(stem) && name.ends_with(extension) &&
                name.size() >= stem.size() + extension.size()) {
                const std::string_view rest = name.substr(stem.size(), name.size() - stem.size() - extension.size());
                // "thumb-de.png" was meant as a variant; "thumbnails.png" is another file.
                const bool isSeparate = rest.empty() || std::string_view("_-. ").find(rest[0]) != rest.npos;
                return isSeparate ? LocalizedName{stem, rest.substr(0, 1),
                                                  rest.substr(std::min<std::size_t>(1, rest.size())), extension}
                                  : LocalizedName();
            }
        }
    }
    return {};
}

Finding About(const Part& part, Severity severity, const char* code, const std::string& text)
{
    return {severity, code, Quoted(NameOf(part)) + ' ' + text, part.name};
}

// A part of no bytes counts as missing.
void CheckContent(const Part& part, std::string_view extension, FindingList& findings)
{
    const bool isPicture = extension == ".png";
    // A head that is empty belongs to a damaged part, which was told of as such.
    if (part.size == 0 || part.head.empty() || (!isPicture && extension != ".mp4") ||
        (isPicture ? IsPNG(part.head) : IsMP4(part.head))) {
        return;
    }
    Finding finding = About(part, Severity::Warning, isPicture ? "NotAPicture" : "NotAVideo",
                            isPicture ? "is no PNG picture" : "is no MP4 video");
    finding.expected = isPicture ? "a PNG file" : "an MP4 file";
    findings.Add(std::move(finding));
}

void CheckLocale(const Part& part, const LocalizedName& name, FindingList& findings)
{
    if (name.IsMeant()) {
        return;
    }
    Finding finding =
        About(part, Severity::Warning, "BadLocale", "has no locale that hosts ask for: " + Quoted(name.locale));
    finding.found = orvcore::Shortened(name.locale);
    finding.expected = std::string(name.stem) + "_, a language and a country, such as \"de_DE\"";
    if (const std::string locale = IsLocale(name.locale) ? std::string(name.locale) : NearestLocale(name.locale);
        !locale.empty()) {
        finding.nearest = std::string(name.stem) + '_' + locale + std::string(name.extension);
    }
    findings.Add(std::move(finding));
}

bool IsOfTheSystem(std::string_view name)
{
    const std::string_view file = name.substr(name.rfind('/') + 1);
    return file == ".DS_Store" || file == "Thumbs.db" || file == "desktop.ini" || name.starts_with("__MACOSX/");
}

// A picture or film of another type under a name that says what it is for.
std::string_view PreviewMeant(std::string_view file)
{
    const std::size_t dot = std::min(file.rfind('.'), file.size());
    const auto isOneOf = [](std::string_view word, std::initializer_list<std::string_view> words) {
        return std::find(words.begin(), words.end(), word) != words.end();
    };
    if (!isOneOf(file.substr(0, dot), {"thumb", "thumbnail", "Thumbnail", "poster", "preview"})) {
        return {};
    }
    const std::string_view extension = file.substr(dot);
    const bool isFilm = isOneOf(extension, {".mp4", ".mov", ".m4v", ".avi", ".webm", ".mpg", ".mkv"});
    const bool isPicture = isOneOf(extension, {".png", ".jpg", ".jpeg", ".gif", ".webp", ".bmp", ".tif", ".tiff"});
    return isFilm ? "thumb.mp4" : isPicture ? "thumb.png" : "";
}

// The known part that a part was meant to be; empty for one that is known, or like none.
std::string PartMeant(std::string_view name, bool hasDefinition)
{
    static orvcore::NoDestructor<std::vector<std::string>> known(
        std::vector<std::string>{"definition.json", "thumb.png", "thumb.mp4", "project.tsgraphic", "project.cvgraphic",
                                 "ZeltOptimizations.bin"});
    const std::string_view file = name.substr(name.rfind('/') + 1);
    const bool isKnown = std::find(known->begin(), known->end(), file) != known->end();
    if (file.size() != name.size()) { // packed with its folder, when nothing lies where it should
        return isKnown && !hasDefinition ? std::string(file) : std::string();
    }
    const std::string_view preview = isKnown ? std::string_view() : PreviewMeant(file);
    return isKnown || !preview.empty() ? std::string(preview) : orvcore::NearestName(file, *known);
}

// Other entries are allowed. One that looks like a known one was meant to be it.
void CheckOther(const Part& part, bool hasDefinition, FindingList& findings)
{
    if (IsOfTheSystem(NameOf(part))) {
        return findings.Add(About(part, Severity::Warning, "StrayFile", "is a file of the author's system"));
    }
    std::string meant = PartMeant(NameOf(part), hasDefinition);
    if (!meant.empty()) {
        Finding finding = About(part, Severity::Warning, "UnknownPart", "is no part that hosts ask for");
        finding.found = orvcore::Shortened(NameOf(part));
        finding.nearest = std::move(meant);
        findings.Add(std::move(finding));
    }
}

void CheckPart(const Part& part, bool hasDefinition, FindingList& findings)
{
    const std::string_view name = NameOf(part);
    const LocalizedName localized = Split(name);
    if (!localized.stem.empty()) {
        CheckLocale(part, localized, findings);
        CheckContent(part, localized.extension, findings);
        if (part.size == 0 && localized.separator.empty()) {
            findings.Add(About(part, Severity::Warning, "EmptyPart", "is empty and counts as missing"));
        }
    } else if (name.starts_with(kPictureFolder)) {
        CheckContent(part, name.substr(std::min(name.rfind('.'), name.size())), findings);
    } else if (!name.ends_with('/')) {
        CheckOther(part, hasDefinition, findings);
    }
}

// One for any locale will do.
bool HasPart(const std::vector<Part>& parts, std::string_view stem, bool isPicture)
{
    return std::any_of(parts.begin(), parts.end(), [&](const Part& part) {
        const LocalizedName name = Split(NameOf(part));
        return part.size != 0 && name.stem == stem && (name.separator.empty() || name.separator == "_") &&
               NameOf(part).find('/') == std::string_view::npos && (!isPicture || name.extension == ".png");
    });
}

} // namespace

void CheckParts(const std::vector<Part>& parts, FindingList& findings)
{
    const bool hasDefinition =
        std::any_of(parts.begin(), parts.end(), [](const Part& part) { return part.name == kJSONFileName; });
    for (const Part& part : parts) {
        CheckPart(part, hasDefinition, findings);
    }
    if (!HasPart(parts, "thumb", true)) {
        findings.Add(
            {Severity::Error, "MissingPoster", "there is no poster (thumb.png)", {}, {}, 0, 0, {}, "thumb.png"});
    }
    if (!HasPart(parts, "project", false)) {
        findings.Add({Severity::Error,
                      "MissingProject",
                      "there is no project (project.tsgraphic or project.cvgraphic)",
                      {},
                      {},
                      0,
                      0,
                      {},
                      "project.tsgraphic or project.cvgraphic"});
    }
}

} // namespace orvcapsule::detail
