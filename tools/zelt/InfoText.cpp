#include "ControlText.h"
#include "InfoOutput.h"
#include "Output.h"

#include <algorithm>
#include <cstdio>

namespace zelt {

namespace {

using namespace orvcapsule;

std::string Joined(const std::vector<std::string>& list)
{
    std::string joined;
    for (const std::string& element : list) {
        joined += (joined.empty() ? "" : ", ") + element;
    }
    return joined;
}

// One line of the summary; nothing when there is nothing to say.
std::string Line(const std::string& label, const std::string& value)
{
    constexpr std::size_t kLabelWidth = 14;
    return value.empty() ? std::string()
                         : "  " + label + std::string(kLabelWidth - label.size(), ' ') + Printable(value) + '\n';
}

std::string Fixed(double number, int decimals)
{
    char text[64];
    const int size = std::snprintf(text, sizeof text, "%.*f", decimals, number);
    return {text, static_cast<std::size_t>(std::clamp(size, 0, 63))};
}

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

// Rows in columns as wide as their widest cell, counted in characters.
std::string Table(const std::vector<std::vector<std::string>>& rows)
{
    const auto width = [](const std::string& text) {
        return static_cast<std::size_t>(std::count_if(
            text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
    };
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], width(row[i]));
        }
    }
    std::string table;
    for (const auto& row : rows) {
        std::string line = "   ";
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += ' ' + row[i] + std::string(widths[i] - width(row[i]) + 1, ' ');
        }
        table += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }
    return table;
}

std::string Controls(const Capsule& capsule)
{
    std::vector<std::vector<std::string>> rows;
    for (const auto& control : capsule.GetControls()) {
        rows.push_back({KindName(control->GetType()), Printable(orvcore::ToNarrow(control->GetID())),
                        Printable(orvcore::ToNarrow(control->GetName())), Printable(ValueText(*control))});
    }
    return rows.empty() ? "" : "  Controls\n" + Table(rows);
}

std::string Entries(const std::vector<orvstorage::ZipEntry>& entries)
{
    std::vector<std::vector<std::string>> rows;
    for (const orvstorage::ZipEntry& entry : entries) {
        rows.push_back({Printable(orvcore::AsNarrow(entry.name)), std::to_string(entry.size) + " bytes",
                        std::to_string(entry.compressedSize) + " packed"});
    }
    return "  Entries\n" + Table(rows);
}

} // namespace

std::string InfoAsText(const Template& read)
{
    const Capsule& capsule = *read.definition.capsule;
    return Printable(read.file) + '\n' + Line("Name", orvcore::ToNarrow(capsule.GetDisplayName())) +
           Line("Description", orvcore::ToNarrow(capsule.GetCapsuleDesc())) +
           Line("Identity", orvcore::ToNarrow(capsule.GetCapsuleID())) +
           Line("Author", orvcore::ToNarrow(capsule.GetAuthorApp()) +
                              (capsule.GetAuthorID().empty() ? "" : " " + orvcore::ToNarrow(capsule.GetAuthorID()))) +
           Line("Version", TSLib(capsule)) + Line("Licence", orvcore::ToNarrow(capsule.GetLicenseID())) +
           Line("Platforms", Joined(capsule.GetPlatformSupport())) + Line("Composition", Composition(capsule)) +
           Line("Locales", Locales(capsule)) + Line("Fonts", Joined(capsule.GetUsedFonts())) +
           Line("Effects", Joined(capsule.GetUsedEffects())) +
           Line("Renderers", Joined(capsule.GetUsedCompRenderers())) +
           Line("File types", Joined(capsule.GetUsedFileTypes())) + Line("Tags", Joined(capsule.GetTags())) +
           Controls(capsule) + Entries(read.entries);
}

} // namespace zelt
