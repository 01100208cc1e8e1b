#include <validation/detail/DefinitionChecks.h>

#include <capsule/DefinitionKeys.h>
#include <orvcore/text/Guid.h>

#include <set>

namespace orvcapsule::detail {

// Readers take almost anything at the top level, so what is told here are warnings: the template is shown, but not as
// its author means it (without a name, by no host, in a substitute font).

namespace {

bool IsList(const PlacedValue& value)
{
    return value && value->IsArray();
}

bool IsObject(const PlacedValue& value)
{
    return value && value->IsObject();
}

void CheckIdentity(const PlacedValue& root, DefinitionReport& report)
{
    const PlacedValue id = root.Find(CAPSULE_CAPID_STR);
    if (id && !id->IsString()) {
        return;
    }
    Note note{Severity::Warning, "NoIdentity", "the template has no identity: hosts cannot tell it from others",
              "a GUID that no other template has"};
    if (!id || id.Text().empty()) {
        return id ? report.At(id, std::move(note)) : report.Absent(root, CAPSULE_CAPID_STR, std::move(note));
    }
    const auto guid = orvcore::Guid::FromString(id.Text());
    if (!guid || *guid == orvcore::Guid()) {
        note.text = "the template's identity " + Quoted(id.Text()) + (guid ? " is everybody's" : " is no GUID");
        report.At(id, std::move(note));
    }
}

// The version gate reads the text before it is parsed, wherever the word stands first.
void CheckVersionPlace(std::string_view text, const PlacedValue& root, DefinitionReport& report)
{
    const PlacedValue version = root.Find(CAPSULE_API_VERSION_STR);
    const std::size_t first = text.find(CAPSULE_API_VERSION_STR);
    if (version && first != version.Outlined().keyBegin + 1) {
        report.AtKey(version,
                     {Severity::Warning, "MisleadingVersion",
                      "the word \"apiVersion\" comes earlier in the text: readers take what follows it there for "
                      "the version",
                      "\"apiVersion\" as the first key"});
    }
}

bool SaysAnythingElse(const PlacedValue& root)
{
    const PlacedValue tags = root.Find(CAPSULE_TAGS_STR);
    const PlacedValue controls = root.Find(CAPSULE_CONTROLS_STR);
    return (tags && tags.size() != 0) || (controls && controls.size() != 0) || !root.Text(CAPSULE_CAPDESC_STR).empty();
}

// A template that was saved before anything was said of it is untitled, and shown by its file's name.
void CheckName(const PlacedValue& root, DefinitionReport& report)
{
    const PlacedValue name = root.Find(CAPSULE_LOCCAPNAME_STR);
    const PlacedValue entries = IsObject(name) ? name.Find(CAPSULE_STRDB_STR) : PlacedValue();
    bool isNamed = name ? false : !root.Text(CAPSULE_CAPNAME_STR).empty();
    for (std::size_t i = 0; IsList(entries) && i < entries.size(); ++i) {
        isNamed = isNamed || !entries[i].Text(CAPSULE_STR_STR).empty();
    }
    const bool hasOlder = !root.Text(CAPSULE_CAPNAME_STR).empty();
    if (isNamed || (!hasOlder && !SaysAnythingElse(root) && name)) {
        return;
    }
    Note note{Severity::Warning, "EmptyName",
              hasOlder ? "the localised name is empty: hosts show \"capsuleName\""
                       : "the template has no name: hosts show its file's",
              "a name"};
    name ? report.At(name, std::move(note)) : report.Absent(root, CAPSULE_LOCCAPNAME_STR, std::move(note));
}

// Texts of a list: none is empty, none comes twice.
void CheckList(const PlacedValue& list, const std::string& what, DefinitionReport& report)
{
    std::set<std::string_view> known;
    for (std::size_t i = 0; IsList(list) && i < list.size(); ++i) {
        const std::string_view text = list[i].Text();
        if (list[i]->IsString() && text.empty()) {
            report.At(list[i], {Severity::Warning, "EmptyName", what + " is empty", "a text"});
        } else if (list[i]->IsString() && !known.insert(text).second) {
            report.At(list[i], {Severity::Warning, "RepeatedEntry", what + ' ' + Quoted(text) + " is there twice"});
        }
    }
}

void CheckLists(const PlacedValue& root, DefinitionReport& report)
{
    CheckList(root.Find(CAPSULE_TAGS_STR), "the tag", report);
    CheckList(root.Find(CAPSULE_CONTROL_PLATFORMSUPPORT_STR), "the platform", report);
    CheckList(root.Find(CAPSULE_USED_EFFECTS_STR), "the effect", report);
    CheckList(root.Find(CAPSULE_USED_COMP_RENDERERS_STR), "the renderer", report);
    CheckList(root.Find(CAPSULE_USED_FILE_TYPES_STR), "the file type", report);
    CheckList(root.Find(CAPSULE_USED_FONTS_STR), "the font", report);
    const PlacedValue fonts = root.Find(CAPSULE_USED_FONTS_LOC_STR);
    for (std::size_t i = 0; IsObject(fonts) && i < fonts.size(); ++i) {
        CheckList(fonts[i], "the font", report);
    }
}

void CheckPlatforms(const PlacedValue& root, DefinitionReport& report)
{
    const PlacedValue platforms = root.Find(CAPSULE_CONTROL_PLATFORMSUPPORT_STR);
    Note note{Severity::Warning, "NoPlatform", "the template names no host that can use it", "at least one host"};
    if (!platforms) {
        report.Absent(root, CAPSULE_CONTROL_PLATFORMSUPPORT_STR, std::move(note));
    } else if (IsList(platforms) && platforms.size() == 0) {
        report.At(platforms, std::move(note));
    }
}

bool HasTextControl(const PlacedValue& root)
{
    const PlacedValue controls = root.Find(CAPSULE_CONTROLS_STR);
    for (std::size_t i = 0; IsList(controls) && i < controls.size(); ++i) {
        std::int64_t type = 0;
        // 6 is ClientControlType::kText.
        if (controls[i].Get(CAPSULE_CONTROL_TYPE_STR, type) && type == 6) {
            return true;
        }
    }
    return false;
}

// Fonts have no common language to fall back to: a text needs some.
// GetUsedFonts falls back to the first language in order, which may have other fonts than the text needs.
void CheckFonts(const PlacedValue& root, DefinitionReport& report)
{
    const PlacedValue fonts = root.Find(CAPSULE_USED_FONTS_LOC_STR);
    const PlacedValue older = root.Find(CAPSULE_USED_FONTS_STR);
    bool hasFonts = IsList(older) && older.size() != 0;
    for (std::size_t i = 0; IsObject(fonts) && i < fonts.size(); ++i) {
        hasFonts = hasFonts || fonts[i].size() != 0;
    }
    for (std::size_t i = 0; hasFonts && IsObject(fonts) && i < fonts.size(); ++i) {
        if (IsList(fonts[i]) && fonts[i].size() == 0) {
            report.At(fonts[i], {Severity::Warning, "NoFonts",
                                 "no font is listed for " + Quoted(fonts[i]->Key()) + ", but for other languages",
                                 "the fonts, or no entry"});
        }
    }
    if (!hasFonts && HasTextControl(root)) {
        Note note{Severity::Warning, "NoFonts", "there are texts to edit, but fonts are listed for no language",
                  "the fonts by locale"};
        fonts ? report.At(fonts, std::move(note)) : report.Absent(root, CAPSULE_USED_FONTS_LOC_STR, std::move(note));
    }
}

void CheckOlderForms(const PlacedValue& root, DefinitionReport& report)
{
    for (const auto& [older, newer] : {std::pair(CAPSULE_SOURCE_INFO_STR, CAPSULE_SOURCE_INFO_LOC_STR),
                                       std::pair(CAPSULE_USED_FONTS_STR, CAPSULE_USED_FONTS_LOC_STR)}) {
        const PlacedValue old = root.Find(older);
        const PlacedValue current = root.Find(newer);
        if (old && IsObject(current) && current.size() != 0) {
            report.AtKey(old, {Severity::Warning, "OlderForm",
                               Quoted(older) + " is the older form and passed over beside " + Quoted(newer)});
        }
    }
}

} // namespace

void CheckTopLevel(std::string_view text, const PlacedValue& root, DefinitionReport& report)
{
    CheckVersionPlace(text, root, report);
    CheckIdentity(root, report);
    CheckName(root, report);
    CheckPlatforms(root, report);
    CheckFonts(root, report);
    CheckLists(root, report);
    CheckOlderForms(root, report);
}

} // namespace orvcapsule::detail
