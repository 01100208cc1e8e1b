#include <orvcore/Strings.h>

#include <cstdint>
#include <cstring>

namespace orvcore {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
    char32_t codePoint;
    std::size_t length; // bytes consumed, at least 1
    bool wellFormed;
};

// One code point of UTF-8 at `at`. An ill-formed sequence consumes its longest valid beginning, so that one
// broken character gives one replacement character.
Decoded DecodeUTF8(const unsigned char* at, std::size_t available) noexcept
{
    const unsigned char lead = at[0];
    if (lead < 0x80) {
        return {lead, 1, true};
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
        return {kReplacement, 1, false};
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= available || at[i] < lowest || at[i] > highest) {
            return {kReplacement, i, false};
        }
        value = (value << 6U) | (at[i] & 0x3FU);
        lowest = 0x80;
        highest = 0xBF;
    }
    return {value, length, true};
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

void AppendUTF16(char32_t codePoint, UTF16String& out)
{
    if (codePoint < 0x10000) {
        out.push_back(static_cast<char16_t>(codePoint));
        return;
    }
    codePoint -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800U + (codePoint >> 10U)));
    out.push_back(static_cast<char16_t>(0xDC00U + (codePoint & 0x3FFU)));
}

char8_t Byte(char32_t value) noexcept
{
    return static_cast<char8_t>(value);
}

void AppendCodePoint(char32_t c, UTF8String& out)
{
    if (c < 0x80) {
        out.push_back(Byte(c));
    } else if (c < 0x800) {
        const char8_t bytes[] = {Byte(0xC0U | (c >> 6U)), Byte(0x80U | (c & 0x3FU))};
        out.append(bytes, 2);
    } else if (c < 0x10000) {
        const char8_t bytes[] = {Byte(0xE0U | (c >> 12U)), Byte(0x80U | ((c >> 6U) & 0x3FU)),
                                 Byte(0x80U | (c & 0x3FU))};
        out.append(bytes, 3);
    } else {
        const char8_t bytes[] = {Byte(0xF0U | (c >> 18U)), Byte(0x80U | ((c >> 12U) & 0x3FU)),
                                 Byte(0x80U | ((c >> 6U) & 0x3FU)), Byte(0x80U | (c & 0x3FU))};
        out.append(bytes, 4);
    }
}

} // namespace

UTF16String ToUTF16(std::string_view narrow)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(narrow.data());
    UTF16String out;
    std::size_t i = 0;
    while (i < narrow.size()) {
        const std::size_t ascii = AsciiPrefix(bytes + i, narrow.size() - i);
        const std::size_t before = out.size();
        out.resize(before + ascii);
        for (std::size_t k = 0; k < ascii; ++k) {
            out[before + k] = bytes[i + k];
        }
        i += ascii;
        while (i < narrow.size() && bytes[i] >= 0x80) {
            const Decoded decoded = DecodeUTF8(bytes + i, narrow.size() - i);
            AppendUTF16(decoded.codePoint, out);
            i += decoded.length;
        }
    }
    return out;
}

UTF16String ToUTF16(std::u8string_view text)
{
    return ToUTF16(AsNarrow(text));
}

void AppendUTF8(std::u16string_view text, UTF8String& out)
{
    std::size_t i = 0;
    while (i < text.size()) {
        std::size_t run = i;
        while (run < text.size() && text[run] < 0x80) {
            ++run;
        }
        const std::size_t before = out.size();
        out.resize(before + (run - i));
        for (std::size_t k = i; k < run; ++k) {
            out[before + (k - i)] = static_cast<char8_t>(text[k]);
        }
        i = run;
        if (i == text.size()) {
            return;
        }
        char32_t codePoint = text[i++];
        if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
            const bool pair = codePoint <= 0xDBFF && i < text.size() && text[i] >= 0xDC00 && text[i] <= 0xDFFF;
            codePoint = pair ? 0x10000 + ((codePoint - 0xD800) << 10U) + (text[i++] - 0xDC00U) : kReplacement;
        }
        AppendCodePoint(codePoint, out);
    }
}

UTF8String ToUTF8(std::u16string_view text)
{
    UTF8String out;
    out.reserve(text.size());
    AppendUTF8(text, out);
    return out;
}

std::string ToNarrow(std::u16string_view text)
{
    return ToNarrow(ToUTF8(text));
}

bool IsWellFormedUTF8(std::string_view text) noexcept
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    std::size_t i = 0;
    while (i < text.size()) {
        i += AsciiPrefix(bytes + i, text.size() - i);
        while (i < text.size() && bytes[i] >= 0x80) {
            const Decoded decoded = DecodeUTF8(bytes + i, text.size() - i);
            if (!decoded.wellFormed) {
                return false;
            }
            i += decoded.length;
        }
    }
    return true;
}

} // namespace orvcore
