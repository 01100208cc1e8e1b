#include <tools/zelt/output/ControlText.h>
#include <tools/zelt/output/InfoOutput.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/TextLayout.h>

// For people alone: lines without a value are left out. Everything from a package passes through Printable.

namespace zelt {

namespace {

using namespace orvcapsule;

std::string Composition(const Capsule& capsule)
{
    if (capsule.GetSourceInfoLocalized().empty()) {
        return "";
    }
    const kinlet::SourceInfo info = capsule.GetSourceInfo();
    const auto& aspect = info.pixelAspectRatio;
    std::string text = std::to_string(info.frameSize.size.x) + " x " + std::to_string(info.frameSize.size.y);
    if (aspect.numerator != aspect.denominator) {
        text += ", pixels " + std::to_string(aspect.numerator) + '/' + std::to_string(aspect.denominator);
    }
    text += ", " + Fixed(static_cast<double>(info.duration.ToMilliseconds()) / 1000, 3) + " s";
    if (info.frameRate.ticksPerFrame > 0) {
        text +=
            " at " +
            Fixed(static_cast<double>(kinlet::kTicksPerSecond) / static_cast<double>(info.frameRate.ticksPerFrame), 2) +
            " frames a second" + (info.isDropFrame ? ", drop frame" : "");
    }
    return text;
}

std::string Locales(const Capsule& capsule)
{
    std::vector<std::string> locales;
    for (const auto& [locale, info] : capsule.GetSourceInfoLocalized()) {
        locales.push_back(orvcore::ToNarrow(locale));
    }
    return Joined(locales);
}

std::string TSLib(const Capsule& capsule)
{
    bool known = false;
    const bool usable = capsule.CanUseTSLib(&known);
    return std::string("format ") + capsule.GetAPIVersion() + (known ? "" : " (unknown)") +
           (usable ? ", usable through the template library" : ", not usable through the template library");
}

std::string Controls(const Capsule& capsule)
{
    std::vector<std::vector<std::string>> rows;
    for (const auto& control : capsule.GetControls()) {
        rows.push_back({KindName(control->GetType()), Printable(orvcore::ToNarrow(control->GetID())),
                        Printable(orvcore::ToNarrow(control->GetName())), Printable(ValueText(*control))});
    }
    return rows.empty() ? "" : "  Controls\n" + Table(rows, "    ");
}

std::string Entries(const std::vector<orvstorage::ZipEntry>& entries)
{
    std::vector<std::vector<std::string>> rows;
    for (const orvstorage::ZipEntry& entry : entries) {
        rows.push_back({Printable(orvcore::AsNarrow(entry.name)), std::to_string(entry.size) + " bytes",
                        std::to_string(entry.compressedSize) + " packed"});
    }
    return "  Entries\n" + Table(rows, "    ");
}

} // namespace

std::string InfoAsText(const Template& read)
{
    const Capsule& capsule = *read.definition.capsule;
    return Printable(read.file) + '\n' + LabelledLine("Name", orvcore::ToNarrow(capsule.GetDisplayName())) +
           LabelledLine("Description", orvcore::ToNarrow(capsule.GetCapsuleDesc())) +
           LabelledLine("Identity", orvcore::ToNarrow(capsule.GetCapsuleID())) +
           LabelledLine("Author",
                        orvcore::ToNarrow(capsule.GetAuthorApp()) +
                            (capsule.GetAuthorID().empty() ? "" : " " + orvcore::ToNarrow(capsule.GetAuthorID()))) +
           LabelledLine("Version", TSLib(capsule)) +
           LabelledLine("Licence", orvcore::ToNarrow(capsule.GetLicenseID())) +
           LabelledLine("Platforms", Joined(capsule.GetPlatformSupport())) +
           LabelledLine("Composition", Composition(capsule)) + LabelledLine("Locales", Locales(capsule)) +
           LabelledLine("Fonts", Joined(capsule.GetUsedFonts())) +
           LabelledLine("Effects", Joined(capsule.GetUsedEffects())) +
           LabelledLine("Renderers", Joined(capsule.GetUsedCompRenderers())) +
           LabelledLine("File types", Joined(capsule.GetUsedFileTypes())) +
           LabelledLine("Tags", Joined(capsule.GetTags())) + Controls(capsule) + Entries(read.entries);
}

} // namespace zelt
