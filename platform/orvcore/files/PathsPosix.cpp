#include <orvcore/files/Paths.h>

#include <algorithm>

// File names are bytes here, and those of old disks or foreign archives need not be UTF-8. Hosts get UTF-16, where such
// a byte becomes a lone surrogate, which no well-formed name holds. So every name comes back as the bytes that it was;
// two files whose names differ in such bytes only stay two.

namespace orvcore {

namespace fs = std::filesystem;

namespace {

constexpr char16_t kLoneByte = 0xDC00; // and the byte, which is 0x80 or more

// The length of the well-formed character at the beginning of `text`; 0 when there is none.
std::size_t CharacterLength(std::string_view text) noexcept
{
    // The shortest that is well-formed: no beginning of a longer character is one itself.
    for (std::size_t length = 1; length <= std::min<std::size_t>(4, text.size()); ++length) {
        if (IsWellFormedUTF8(text.substr(0, length))) {
            return length;
        }
    }
    return 0;
}

bool IsLoneByte(std::u16string_view text, std::size_t at) noexcept
{
    // The same values are the second half of a pair, where they belong to a character.
    const bool completesPair = at > 0 && text[at - 1] >= 0xD800 && text[at - 1] <= 0xDBFF;
    return text[at] >= kLoneByte + 0x80 && text[at] <= kLoneByte + 0xFF && !completesPair;
}

} // namespace

UTF16String PathTextToUTF16(std::u8string_view text)
{
    std::string_view rest = AsNarrow(text);
    // Nearly every path: one look and one conversion.
    if (IsWellFormedUTF8(rest)) {
        return ToUTF16(rest);
    }
    UTF16String wide;
    while (!rest.empty()) {
        const std::size_t length = CharacterLength(rest);
        if (length > 0) {
            wide += ToUTF16(rest.substr(0, length));
        } else {
            wide += static_cast<char16_t>(kLoneByte + static_cast<unsigned char>(rest.front()));
        }
        rest.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return wide;
}

UTF8String PathTextToUTF8(std::u16string_view text)
{
    UTF8String bytes;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (IsLoneByte(text, at)) {
            bytes += ToUTF8(text.substr(begin, at - begin));
            bytes += static_cast<char8_t>(text[at] - kLoneByte);
            begin = at + 1;
        }
    }
    return begin == 0 ? ToUTF8(text) : bytes + ToUTF8(text.substr(begin));
}

fs::path PathFromUTF8(std::u8string_view text)
{
    return std::string(AsNarrow(text));
}

fs::path PathFromUTF16(std::u16string_view text)
{
    return PathFromUTF8(PathTextToUTF8(text));
}

UTF8String PathToUTF8(const fs::path& path)
{
    return ToUTF8(path.native());
}

UTF16String PathToUTF16(const fs::path& path)
{
    return PathTextToUTF16(AsUTF8(path.native()));
}

fs::path ToSystemPath(const fs::path& path)
{
    return path;
}

} // namespace orvcore
