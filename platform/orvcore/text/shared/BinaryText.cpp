#include <orvcore/text/shared/BinaryText.h>

#include <array>

namespace orvcore {

namespace {

constexpr std::u8string_view kLetters = u8"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoLetter = 0xFF;

constexpr std::array<std::uint8_t, 256> kValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoLetter);
    for (std::size_t i = 0; i < kLetters.size(); ++i) {
        values[kLetters[i]] = static_cast<std::uint8_t>(i);
    }
    return values;
}();

} // namespace

UTF8String EncodeBinaryDataToUTF8String(std::span<const std::uint8_t> data)
{
    UTF8String text;
    text.reserve((data.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < data.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, data.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = (group << 8U) | (k < count ? data[i + k] : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            // So many bytes fill one letter more than they are; the rest of the four is padding.
            text.push_back(k <= count ? kLetters[(group >> (18U - 6U * k)) & 0x3FU] : u8'=');
        }
    }
    return text;
}

std::optional<std::vector<std::uint8_t>> DecodeBinaryDataFromUTF8String(std::u8string_view text)
{
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> data;
    data.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const bool last = i + 4 == text.size();
        const std::size_t padding = last && text[i + 3] == u8'=' ? (text[i + 2] == u8'=' ? 2U : 1U) : 0U;
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            const std::uint8_t value = k < 4 - padding ? kValues[text[i + k]] : std::uint8_t{0};
            if (value == kNoLetter) {
                return std::nullopt;
            }
            group = (group << 6U) | value;
        }
        // Bits that are left over must be zero: then no two texts stand for the same bytes.
        if ((group & ((1U << (8U * padding)) - 1U)) != 0) {
            return std::nullopt;
        }
        for (std::size_t k = 0; k < 3 - padding; ++k) {
            data.push_back(static_cast<std::uint8_t>((group >> (16U - 8U * k)) & 0xFFU));
        }
    }
    return data;
}

} // namespace orvcore
