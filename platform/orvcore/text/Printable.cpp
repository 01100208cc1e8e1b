#include <orvcore/text/Printable.h>

#include <utf8proc.h>

namespace orvcore {

namespace {

// Besides the control characters of ASCII and Latin-1 those that end lines, and those that turn the direction of
// writing: with them a name in a terminal or a log may show as another one.
bool IsControl(utf8proc_int32_t c)
{
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

} // namespace

std::string Printable(std::string_view text)
{
    std::string safe;
    while (!text.empty()) {
        utf8proc_int32_t codePoint = 0;
        const utf8proc_ssize_t length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                                         static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
        const auto taken = length > 0 ? static_cast<std::size_t>(length) : 1;
        safe += length > 0 && !IsControl(codePoint) ? text.substr(0, taken) : "?";
        text.remove_prefix(taken);
    }
    return safe;
}

std::string Shortened(std::string_view text)
{
    constexpr std::size_t kMost = 80;
    if (text.size() <= kMost) {
        return std::string(text);
    }
    std::size_t end = kMost;
    // Back to the beginning of the character that would be cut.
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) { // inside a character
        --end;
    }
    return std::string(text.substr(0, end)) + "...";
}

} // namespace orvcore
