#include <tools/zelt/editing/ControlInput.h>

#include <tools/zelt/output/ControlText.h>
#include <tools/zelt/output/Errors.h>

#include <capsule/Serialization.h>
#include <orvcore/json/JSONSplice.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace zelt {

// What a person types is turned into JSON text and not into a control's value: the text goes into the document in the
// place of the old one, and everything beside it keeps its bytes. The record is only asked what the control is and what
// its limits are.

namespace {

using namespace orvcapsule;
namespace json = orvcore::serialization;
using json::ToJSON;

[[noreturn]] void Refuse(std::string_view input, const std::string& wanted)
{
    throw UsageError('"' + std::string(input) + "\" is not " + wanted);
}

std::string_view Trim(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

template <class T>
std::optional<T> ParseWhole(std::string_view text)
{
    text = Trim(text);
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional<T>(value) : std::nullopt;
}

std::optional<double> ParseNumber(std::string_view text)
{
    const auto number = ParseWhole<double>(text);
    return number && std::isfinite(*number) ? number : std::nullopt; // JSON has no other numbers
}

} // namespace

std::vector<double> ParseNumbers(std::string_view text)
{
    std::vector<double> numbers;
    while (true) {
        const std::size_t comma = std::min(text.find(','), text.size());
        const auto number = ParseNumber(text.substr(0, comma));
        if (!number) {
            return {};
        }
        numbers.push_back(*number);
        if (comma == text.size()) {
            return numbers;
        }
        text.remove_prefix(comma + 1);
    }
}

namespace {

std::string List(const std::vector<double>& numbers)
{
    std::string list;
    for (const double number : numbers) {
        list += (list.empty() ? "[" : ",") + ToJSON(number);
    }
    return list + ']';
}

std::string Switch(std::string_view input)
{
    for (const std::string_view on : {"true", "on", "yes", "1"}) {
        if (input == on) {
            return "true";
        }
    }
    for (const std::string_view off : {"false", "off", "no", "0"}) {
        if (input == off) {
            return "false";
        }
    }
    Refuse(input, "on or off");
}

void NeedInRange(double number, double least, double most, bool force)
{
    if (!force && (number < least || number > most)) {
        throw UsageError(ToJSON(number) + " is outside the range " + ToJSON(least) + " to " + ToJSON(most) +
                         "; --force sets it all the same");
    }
}

std::string Number(const ClientControl& control, std::string_view input, bool force)
{
    const auto number = ParseNumber(input);
    if (!number) {
        Refuse(input, "a number");
    }
    const auto* slider = dynamic_cast<const SliderControl*>(&control);
    if (slider != nullptr) {
        NeedInRange(*number, slider->GetMinimum(), slider->GetMaximum(), force);
    }
    return ToJSON(*number);
}

// The parts of "#RRGGBB" or "#RRGGBBAA", 0 to 1; empty when it is neither.
std::vector<double> ParseHexColour(std::string_view text)
{
    std::vector<double> parts;
    for (text.remove_prefix(1); text.size() >= 2; text.remove_prefix(2)) {
        unsigned part = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + 2, part, 16);
        if (error != std::errc() || end != text.data() + 2) {
            return {};
        }
        parts.push_back(part / 255.0);
    }
    return text.empty() ? parts : std::vector<double>();
}

std::string Colour(const ClientControl& control, std::string_view input, bool force)
{
    std::vector<double> parts = input.starts_with('#') ? ParseHexColour(input) : ParseNumbers(input);
    if (parts.size() != 3 && parts.size() != 4) {
        Refuse(input, "a colour: r,g,b or r,g,b,a from 0 to 1, #RRGGBB or #RRGGBBAA");
    }
    for (const double part : parts) {
        NeedInRange(part, 0, 1, force);
    }
    if (parts.size() == 3) {
        // Whoever names three parts means the colour, not that it becomes opaque.
        parts.push_back(std::get<ColorRGBA>(control.GetVal()).alpha);
    }
    return List(parts);
}

std::string Point(std::string_view input)
{
    const std::vector<double> parts = ParseNumbers(input);
    if (parts.size() != 2) {
        Refuse(input, "a point: x,y");
    }
    return "{\"x\":" + ToJSON(parts[0]) + ",\"y\":" + ToJSON(parts[1]) + '}';
}

std::string Scale(const ScaleControl& scale, std::string_view input, bool force)
{
    const std::vector<double> parts = ParseNumbers(input);
    const auto dimensions = static_cast<std::size_t>(std::max(scale.GetDimensions(), 0));
    if (parts.empty() || (parts.size() != dimensions && !force)) {
        Refuse(input, "a scale of " + std::to_string(dimensions) + " numbers with commas");
    }
    return List(parts);
}

std::string Menu(const MenuControl& menu, std::string_view input, bool force)
{
    const auto& entries = menu.GetEntries();
    // An index goes before an entry of the same digits; such an entry has an index of its own.
    const auto index = ParseWhole<std::int32_t>(input);
    if (index && *index >= 0 && static_cast<std::size_t>(*index) < entries.size()) {
        return std::to_string(*index);
    }
    std::string choice;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        choice += (i == 0 ? "" : ", ") + std::to_string(i) + " \"" + orvcore::ToNarrow(entries[i].GetString()) + '"';
        for (const auto& [locale, text] : entries[i].GetLocaleStrings()) {
            if (orvcore::ToNarrow(text) == input) {
                return std::to_string(i);
            }
        }
    }
    // Readers keep an index outside the list, so an author may want one.
    if (index && force) {
        return std::to_string(*index);
    }
    Refuse(input, "one of its entries: " + choice);
}

// The table is read back through the control, so that it is one that a host can read.
std::string Table(const ClientControl& control, std::string_view input)
{
    try {
        const auto value = json::JSONParse(orvcore::AsUTF8(input));
        auto tree = serialization::ClientControlToJson(
            std::make_shared<SpreadsheetControl>(dynamic_cast<const SpreadsheetControl&>(control)));
        json::UpdateInObject(tree, u8"value", value);
        serialization::ClientControlFromJson(tree);
        return orvcore::ToNarrow(json::GetJSONUTF8String(value, false));
    } catch (const json::json_parse_exception& error) {
        throw UsageError(std::string("a spreadsheet takes the JSON text of its value: ") + error.what());
    } catch (const json::missing_key_exception& error) {
        throw UsageError("a spreadsheet takes the JSON text of its value; it lacks a usable \"" + error.GetKey() + '"');
    }
}

} // namespace

std::string ValueAsJSON(const ClientControl& control, std::string_view input, bool force)
{
    switch (control.GetType()) {
    case ClientControlType::kCheckbox:
        return Switch(input);
    case ClientControlType::kSlider:
    case ClientControlType::kAngle:
        return Number(control, input, force);
    case ClientControlType::kColor:
        return Colour(control, input, force);
    case ClientControlType::kPoint2D:
        return Point(input);
    case ClientControlType::kScale:
        return Scale(dynamic_cast<const ScaleControl&>(control), input, force);
    case ClientControlType::kMenu:
        return Menu(dynamic_cast<const MenuControl&>(control), input, force);
    case ClientControlType::kMedia:
        return ToJSON(input);
    case ClientControlType::kSpreadsheet:
        return Table(control, input);
    case ClientControlType::kText:
    case ClientControlType::kComment:
    case ClientControlType::kGroup:
    case ClientControlType::kGroupDropZone:
        break;
    }
    throw UsageError("a control of the kind " + KindName(control.GetType()) + " has no value to set");
}

} // namespace zelt
