#include <tools/support/DisplayWidth.h>

#include <utf8proc.h>

namespace orvtools {

namespace {

// Vowels and final consonants of Hangul. They join the syllable before them, as in names that come decomposed from
// another system; the library counts them as if they stood alone.
bool IsJoiningHangul(utf8proc_int32_t c) noexcept
{
    return (c >= 0x1160 && c <= 0x11FF) || (c >= 0xD7B0 && c <= 0xD7FB);
}

std::size_t WidthOf(utf8proc_int32_t c) noexcept
{
    return IsJoiningHangul(c) ? 0 : static_cast<std::size_t>(utf8proc_charwidth(c));
}

} // namespace

std::size_t DisplayWidth(std::string_view text) noexcept
{
    std::size_t width = 0;
    while (!text.empty()) {
        utf8proc_int32_t c = 0;
        const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                             static_cast<utf8proc_ssize_t>(text.size()), &c);
        // A byte that belongs to no character is shown as one replacement.
        width += length > 0 ? WidthOf(c) : 1;
        text.remove_prefix(length > 0 ? static_cast<std::size_t>(length) : 1);
    }
    return width;
}

} // namespace orvtools
