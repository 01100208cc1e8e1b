#include <orvcore/text/Strings.h>

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace orvcore {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
    char32_t codePoint;
    std::size_t length; // bytes consumed, at least 1
};

// One code point of UTF-8 at `at`. An ill-formed sequence consumes its longest valid beginning, so that one
// broken character gives one replacement character.
Decoded DecodeUTF8(const unsigned char* at, std::size_t available) noexcept
{
    // The second byte has a narrower range behind some leads: it keeps out over-long forms (E0, F0), surrogates (ED)
    // and what lies beyond U+10FFFF (F4). C0, C1 and F5 to FF begin nothing.
    const unsigned char lead = at[0];
    if (lead < 0x80) {
        return {lead, 1};
    }
    std::size_t length = 0;
    unsigned char lowest = 0x80;
    unsigned char highest = 0xBF;
    char32_t value = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        value = lead & 0x1FU;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        value = lead & 0x0FU;
        lowest = lead == 0xE0 ? 0xA0 : 0x80;
        highest = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        value = lead & 0x07U;
        lowest = lead == 0xF0 ? 0x90 : 0x80;
        highest = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return {kReplacement, 1};
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= available || at[i] < lowest || at[i] > highest) {
            return {kReplacement, i};
        }
        value = (value << 6U) | (at[i] & 0x3FU);
        lowest = 0x80;
        highest = 0xBF;
    }
    return {value, length};
}

// The number of leading bytes below 0x80, found eight at a time.
std::size_t AsciiPrefix(const unsigned char* at, std::size_t size) noexcept
{
    std::size_t i = 0;
    for (; i + 8 <= size; i += 8) {
        std::uint64_t block = 0;
        std::memcpy(&block, at + i, 8);
        if ((block & 0x8080808080808080ULL) != 0) {
            break;
        }
    }
    while (i < size && at[i] < 0x80) {
        ++i;
    }
    return i;
}

char16_t* PutUTF16(char32_t codePoint, char16_t* to) noexcept
{
    if (codePoint < 0x10000) {
        *to++ = static_cast<char16_t>(codePoint);
        return to;
    }
    codePoint -= 0x10000;
    *to++ = static_cast<char16_t>(0xD800U + (codePoint >> 10U));
    *to++ = static_cast<char16_t>(0xDC00U + (codePoint & 0x3FFU));
    return to;
}

bool Continues(unsigned char byte) noexcept
{
    return (byte & 0xC0U) == 0x80U;
}

// Decodes a whole text of which the first `ascii` bytes are ASCII; returns the end of what was put.
char16_t* DecodeAll(const unsigned char* bytes, std::size_t size, std::size_t ascii, char16_t* to) noexcept
{
    to = std::copy(bytes, bytes + ascii, to);
    for (std::size_t i = ascii; i < size;) {
        if (bytes[i] < 0x80) {
            do {
                *to++ = bytes[i++];
            } while (i < size && bytes[i] < 0x80);
            continue;
        }
        // Well-formed two- and three-byte sequences are nearly all there is past ASCII. Both shortcuts take well-formed
        // sequences only (no over-long ones, no surrogates); all else goes the long way, where it is replaced. So do
        // the last two bytes of the text: no read goes beyond its end.
        if (i + 2 < size && Continues(bytes[i + 1])) {
            const unsigned two = (bytes[i] & 0x1FU) << 6U | (bytes[i + 1] & 0x3FU);
            if ((bytes[i] & 0xE0U) == 0xC0U && two >= 0x80) {
                *to++ = static_cast<char16_t>(two);
                i += 2;
                continue;
            }
            const unsigned three = (bytes[i] & 0x0FU) << 12U | (bytes[i + 1] & 0x3FU) << 6U | (bytes[i + 2] & 0x3FU);
            if ((bytes[i] & 0xF0U) == 0xE0U && Continues(bytes[i + 2]) && three >= 0x800 &&
                (three & 0xF800U) != 0xD800U) {
                *to++ = static_cast<char16_t>(three);
                i += 3;
                continue;
            }
        }
        const Decoded decoded = DecodeUTF8(bytes + i, size - i);
        to = PutUTF16(decoded.codePoint, to);
        i += decoded.length;
    }
    return to;
}

char8_t Byte(char32_t value) noexcept
{
    return static_cast<char8_t>(value);
}

// One code point as UTF-8; returns the end of what was put.
char8_t* PutUTF8(char32_t c, char8_t* to) noexcept
{
    if (c < 0x80) {
        *to++ = Byte(c);
    } else if (c < 0x800) {
        *to++ = Byte(0xC0U | (c >> 6U));
        *to++ = Byte(0x80U | (c & 0x3FU));
    } else if (c < 0x10000) {
        *to++ = Byte(0xE0U | (c >> 12U));
        *to++ = Byte(0x80U | ((c >> 6U) & 0x3FU));
        *to++ = Byte(0x80U | (c & 0x3FU));
    } else {
        *to++ = Byte(0xF0U | (c >> 18U));
        *to++ = Byte(0x80U | ((c >> 12U) & 0x3FU));
        *to++ = Byte(0x80U | ((c >> 6U) & 0x3FU));
        *to++ = Byte(0x80U | (c & 0x3FU));
    }
    return to;
}

} // namespace

UTF16String ToUTF16(std::string_view narrow)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(narrow.data());
    const std::size_t ascii = AsciiPrefix(bytes, narrow.size());
    if (ascii == narrow.size()) {
        return UTF16String(bytes, bytes + ascii);
    }
    // No byte gives more than one code unit. Most texts are short and are decoded in place of a second allocation.
    // On the stack, where it costs nothing to be larger than what comes.
    constexpr std::size_t kShort = 512;
    std::array<char16_t, kShort> shortUnits;
    if (narrow.size() <= kShort) {
        return UTF16String(shortUnits.data(), DecodeAll(bytes, narrow.size(), ascii, shortUnits.data()));
    }
    UTF16String out(narrow.size(), u'\0');
    out.resize(static_cast<std::size_t>(DecodeAll(bytes, narrow.size(), ascii, out.data()) - out.data()));
    out.shrink_to_fit();
    return out;
}

UTF16String ToUTF16(std::u8string_view text)
{
    return ToUTF16(AsNarrow(text));
}

char8_t* EncodeUTF8(std::u16string_view text, char8_t* to) noexcept
{
    for (std::size_t i = 0; i < text.size();) {
        char32_t codePoint = text[i++];
        if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
            const bool pair = codePoint <= 0xDBFF && i < text.size() && text[i] >= 0xDC00 && text[i] <= 0xDFFF;
            codePoint = pair ? 0x10000 + ((codePoint - 0xD800) << 10U) + (text[i++] - 0xDC00U) : kReplacement;
        }
        to = PutUTF8(codePoint, to);
    }
    return to;
}

UTF8String ToUTF8(std::u16string_view text)
{
    constexpr std::size_t kShort = 256;
    if (text.size() <= kShort) {
        std::array<char8_t, kShort * kMaxUTF8PerUTF16> bytes;
        return UTF8String(bytes.data(), EncodeUTF8(text, bytes.data()));
    }
    UTF8String out(text.size() * kMaxUTF8PerUTF16, u8'\0');
    out.resize(static_cast<std::size_t>(EncodeUTF8(text, out.data()) - out.data()));
    // Up to three bytes were reserved for each code unit, mostly to hold one.
    out.shrink_to_fit();
    return out;
}

std::string ToNarrow(std::u16string_view text)
{
    return ToNarrow(ToUTF8(text));
}

bool IsWellFormedUTF8(std::string_view text) noexcept
{
    return simdjson::validate_utf8(text);
}

} // namespace orvcore
