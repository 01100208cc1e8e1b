#include <tools/zelt/panel/TemplateJSON.h>

#include <tools/zelt/output/FindingOutput.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/panel/EntryRow.h>

#include <capsule/Serialization.h>
#include <orvcore/files/Paths.h>
#include <orvcore/json/JSONTextWriter.h>
#include <stock/StockCapsuleEntry.h>
#include <tools/support/fonts/MachineFonts.h>
#include <validation/TemplateReading.h>
#include <validation/Validation.h>

#include <optional>
#include <set>

// Details are read from the package at each request and not kept: a user looks at a few of many, and what is shown
// should be what the package holds now. Controls travel as the document has them, so that the page needs no second form
// of each kind.

namespace zelt {

namespace {

using namespace orvcapsule;
namespace json = orvcore::serialization;
using orvcore::AsNarrow;

// The machine's fonts, asked for once: that takes a while.
const std::optional<std::set<std::string>>& MachineFonts()
{
    static const auto kFonts = orvtools::InstalledFontNames();
    return kFonts;
}

// Writes the members of an object.
class Writer {
public:
    void Text(std::string_view key, std::string_view text)
    {
        out.Key(key);
        out.String(text);
    }
    void Text(std::string_view key, const UTF16String& text)
    {
        out.Key(key);
        out.String(text);
    }
    void Bool(std::string_view key, bool value)
    {
        out.Key(key);
        out.Bool(value);
    }
    void List(std::string_view key, const std::vector<std::string>& texts)
    {
        WriteList(out, key, texts);
    }
    std::string Take()
    {
        return orvcore::ToNarrow(out.Take());
    }

    json::JSONTextWriter out;
};

void WriteTexts(json::JSONTextWriter& out, const UIString& texts)
{
    out.BeginObject();
    for (const auto& [locale, text] : texts.GetLocaleStrings()) {
        out.Key(orvcore::ToNarrow(locale));
        out.String(text);
    }
    out.EndObject();
}

void WriteFonts(Writer& writer, const Capsule& capsule, bool areToldOfMachine)
{
    writer.out.Key("fonts");
    writer.out.BeginObject();
    for (const auto& [locale, fonts] : capsule.GetUsedFontsLocalized()) {
        writer.out.Key(orvcore::ToNarrow(locale));
        writer.out.BeginArray();
        for (const std::string& font : fonts) {
            writer.out.BeginObject();
            writer.Text("name", font);
            if (areToldOfMachine && MachineFonts()) {
                writer.Bool("installed", MachineFonts()->contains(font));
            }
            writer.out.EndObject();
        }
        writer.out.EndArray();
    }
    writer.out.EndObject();
}

// In the form of the document, which the page draws; one that a document cannot hold is left out.
void WriteControls(Writer& writer, const Capsule& capsule)
{
    writer.out.Key("controls");
    writer.out.BeginArray();
    for (const auto& control : capsule.GetControls()) {
        try {
            writer.out.Raw(AsNarrow(json::GetJSONUTF8String(serialization::ClientControlToJson(control), false)));
        } catch (const json::json_write_exception&) {
            continue;
        }
    }
    writer.out.EndArray();
}

void WriteCapsule(Writer& writer, const Capsule& capsule, bool areFontsTold)
{
    UIString names = capsule.GetCapsuleNameLocalized();
    if (names.GetString().empty()) { // from before names were localised
        names.SetString(capsule.GetCapsuleNameObsolete(), u"en_US");
    }
    writer.out.Key("names");
    WriteTexts(writer.out, names);
    writer.Text("description", capsule.GetCapsuleDesc());
    writer.Text("capsuleID", capsule.GetCapsuleID());
    writer.Text("licenseID", capsule.GetLicenseID());
    writer.List("platforms", capsule.GetPlatformSupport());
    writer.List("tags", capsule.GetTags());
    writer.List("effects", capsule.GetUsedEffects());
    WriteFonts(writer, capsule, areFontsTold);
    WriteControls(writer, capsule);
}

std::string FileNameOf(const CapsuleEntry& entry)
{
    return ToText(orvcore::PathFromUTF8(entry.path).filename());
}

} // namespace

std::string TextsAsJSON(const UIString& texts)
{
    json::JSONTextWriter out;
    WriteTexts(out, texts);
    return orvcore::ToNarrow(out.Take());
}

std::string DetailsAsJSON(const CapsuleEntry& entry, const DetailsFacts& facts)
{
    const TemplateReading read = orvcapsule::ReadTemplate(orvcore::PathFromUTF8(entry.path));
    Writer writer;
    writer.out.BeginObject();
    writer.Text("file", FileNameOf(entry));
    writer.Text("folder", facts.folder);
    writer.Text("apiVersion", read.declaredVersion);
    if (read) {
        writer.Bool("editable", facts.editable);
        writer.Bool("replaceable", facts.replaceable);
        writer.Text("copyName", facts.copyName);
        writer.Text("copyFolder", facts.copyFolder);
        WriteCapsule(writer, *read.capsule, facts.areFontsTold);
    } else {
        writer.Text("error", read.refusals.front().text);
    }
    if (facts.isChecked) {
        writer.out.Key("check");
        writer.out.Raw(CheckAsJSON(entry));
    }
    writer.out.EndObject();
    return writer.Take();
}

std::string StockDetailsAsJSON(const StockCapsuleEntry& entry, const Capsule* capsule)
{
    Writer writer;
    writer.out.BeginObject();
    writer.Text("folder", "Stock service");
    writer.Text("creator", entry.creatorName);
    if (capsule != nullptr) {
        writer.Text("apiVersion", capsule->GetAPIVersion());
        WriteCapsule(writer, *capsule, true);
    } else {
        writer.Text("description", entry.description);
    }
    writer.out.EndObject();
    return writer.Take();
}

std::string CheckAsJSON(const CapsuleEntry& entry)
{
    return FindingsJSON(FileNameOf(entry), ValidateTemplate(orvcore::PathFromUTF8(entry.path)), false);
}

} // namespace zelt
