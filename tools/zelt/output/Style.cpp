#include <tools/zelt/output/Style.h>

#include <tools/support/DisplayWidth.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>

namespace zelt {

namespace {

using orvtools::StandardStream;

bool UsesColour(StandardStream stream)
{
    // Asked once: on Windows the question switches the console to take colours.
    static const char* const kRefused = std::getenv("NO_COLOR");
    static const std::array<bool, 2> kTakes = {orvtools::TakesColour(StandardStream::Output),
                                               orvtools::TakesColour(StandardStream::Error)};
    return (kRefused == nullptr || *kRefused == '\0') && kTakes[stream == StandardStream::Output ? 0 : 1];
}

std::string_view ColourOf(Style style)
{
    switch (style) {
    case Style::Heading:
        return "\x1b[1m";
    case Style::Good:
        return "\x1b[32m";
    case Style::Bad:
        return "\x1b[31m";
    case Style::Warning:
        return "\x1b[33m";
    }
    return {};
}

} // namespace

std::string Styled(std::string_view text, Style style, StandardStream stream)
{
    return UsesColour(stream) ? std::string(ColourOf(style)) + std::string(text) + "\x1b[0m" : std::string(text);
}

std::size_t OutputWidth()
{
    constexpr std::size_t kUsual = 80;
    constexpr std::size_t kNarrowest = 40;
    std::size_t width = orvtools::TerminalWidth(StandardStream::Output);
    if (const char* columns = std::getenv("COLUMNS"); width == 0 && columns != nullptr) {
        const std::string_view text = columns;
        std::from_chars(text.data(), text.data() + text.size(), width);
    }
    return std::max(width == 0 ? kUsual : width, kNarrowest);
}

// Columns and not bytes: a letter may take several bytes, or two columns.
std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent)
{
    std::string lines;
    std::size_t column = indent;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        const std::size_t wordWidth = orvtools::DisplayWidth(word);
        if (!lines.empty() && column + 1 + wordWidth > width) {
            lines += '\n' + std::string(indent, ' ');
            column = indent;
        } else if (!lines.empty()) {
            lines += ' ';
            ++column;
        }
        lines += word;
        column += wordWidth;
    }
    return lines;
}

} // namespace zelt
