#include <tools/zelt/output/TextLayout.h>

#include <tools/support/DisplayWidth.h>
#include <tools/zelt/output/Output.h>

#include <algorithm>
#include <cstdio>

namespace zelt {

std::string Joined(const std::vector<std::string>& list, std::string_view separator)
{
    std::string joined;
    for (const std::string& element : list) {
        joined += joined.empty() ? "" : separator;
        joined += element;
    }
    return joined;
}

std::string LabelledLine(const std::string& label, std::string_view value)
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

std::string Table(const std::vector<std::vector<std::string>>& rows, std::string_view indent)
{
    // One very long name would otherwise push all other rows' columns out of sight.
    constexpr std::size_t kWidestColumn = 60;
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], std::min(orvtools::DisplayWidth(row[i]), kWidestColumn));
        }
    }
    std::string table;
    for (const auto& row : rows) {
        std::string line(indent);
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::size_t width = orvtools::DisplayWidth(row[i]);
            line += row[i] + std::string(std::max(widths[i], width) - width + 2, ' ');
        }
        table += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }
    return table;
}

} // namespace zelt
