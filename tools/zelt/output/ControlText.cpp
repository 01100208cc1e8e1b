#include <tools/zelt/output/ControlText.h>

#include <tools/zelt/output/Output.h>

#include <orvcore/json/JSONSplice.h>

namespace zelt {

namespace {

using namespace orvcapsule;
using orvcore::serialization::ToJSON;

std::string Numbers(const std::vector<double>& numbers)
{
    std::string text;
    for (const double number : numbers) {
        text += (text.empty() ? "" : ", ") + ToJSON(number);
    }
    return text;
}

std::string MenuText(const MenuControl& menu, std::int32_t index)
{
    const auto& entries = menu.GetEntries();
    const bool inside = index >= 0 && static_cast<std::size_t>(index) < entries.size();
    const auto entry = static_cast<std::size_t>(index);
    return std::to_string(index) + (inside ? ": " + orvcore::ToNarrow(entries[entry].GetString()) : " (no such entry)");
}

struct Describe {
    const ClientControl& control;

    std::string operator()(const UTF16String& cacheID) const
    {
        return orvcore::ToNarrow(cacheID);
    }
    std::string operator()(const Point2D& point) const
    {
        return Numbers({point.x, point.y});
    }
    std::string operator()(const ColorRGBA& colour) const
    {
        return Numbers({colour.red, colour.green, colour.blue, colour.alpha});
    }
    std::string operator()(std::int32_t index) const
    {
        const auto* menu = dynamic_cast<const MenuControl*>(&control);
        return menu != nullptr ? MenuText(*menu, index) : std::to_string(index);
    }
    std::string operator()(float number) const
    {
        return Numbers({double{number}});
    }
    std::string operator()(double number) const
    {
        const auto* slider = dynamic_cast<const SliderControl*>(&control);
        return Numbers({number}) +
               (slider != nullptr ? " (" + ToJSON(slider->GetMinimum()) + " to " + ToJSON(slider->GetMaximum()) + ')'
                                  : "");
    }
    std::string operator()(bool on) const
    {
        return on ? "on" : "off";
    }
    std::string operator()(const std::vector<double>& numbers) const
    {
        return Numbers(numbers);
    }
    std::string operator()(const UIString& text) const
    {
        return '"' + orvcore::ToNarrow(text.GetString()) + '"';
    }
    std::string operator()(const std::vector<UTF16String>& members) const
    {
        std::string text;
        for (const UTF16String& member : members) {
            text += (text.empty() ? "" : ", ") + orvcore::ToNarrow(member);
        }
        return text;
    }
    std::string operator()(const kinlet::SpreadsheetValue& table) const
    {
        return Count(static_cast<std::size_t>(table.activeRows), "row") + " in use, " +
               Count(table.columnValues.size(), "column");
    }
};

} // namespace

std::string KindName(ClientControlType type)
{
    switch (type) {
    case ClientControlType::kCheckbox:
        return "check box";
    case ClientControlType::kSlider:
        return "slider";
    case ClientControlType::kAngle:
        return "angle";
    case ClientControlType::kColor:
        return "colour";
    case ClientControlType::kPoint2D:
        return "point";
    case ClientControlType::kText:
        return "text";
    case ClientControlType::kComment:
        return "comment";
    case ClientControlType::kScale:
        return "scale";
    case ClientControlType::kGroup:
        return "group";
    case ClientControlType::kSpreadsheet:
        return "spreadsheet";
    case ClientControlType::kGroupDropZone:
        return "drop zone";
    case ClientControlType::kMenu:
        return "menu";
    case ClientControlType::kMedia:
        return "media";
    }
    return "unknown kind";
}

std::string ValueText(const ClientControl& control)
{
    return std::visit(Describe{control}, control.GetVal());
}

} // namespace zelt
