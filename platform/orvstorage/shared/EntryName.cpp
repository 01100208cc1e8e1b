#include <orvstorage/shared/EntryName.h>

#include <utf8proc.h>

#include <algorithm>
#include <array>

namespace orvstorage::detail {

namespace {

constexpr std::size_t kLongestComponent = 255; // bytes, the least that the systems' file systems take
constexpr std::size_t kLongestName = 2048;
constexpr std::u8string_view kReserved = u8"<>:\"|?*\\";
constexpr std::array<std::u8string_view, 6> kDevices = {u8"con", u8"prn", u8"aux", u8"nul", u8"conin$", u8"conout$"};
constexpr std::array<std::u8string_view, 3> kSuperscriptDigits = {u8"\u00b9", u8"\u00b2", u8"\u00b3"};

char8_t Lower(char8_t c)
{
    return c >= u8'A' && c <= u8'Z' ? static_cast<char8_t>(c + 32) : c;
}

bool IsLetter(char8_t c)
{
    return Lower(c) >= u8'a' && Lower(c) <= u8'z';
}

// Windows takes "nul", "NUL.txt" and "com1 .txt" for devices, whatever their folder.
bool IsDevice(std::u8string_view component)
{
    orvcore::UTF8String stem(component.substr(0, component.find(u8'.')));
    stem.erase(stem.find_last_not_of(u8' ') + 1);
    std::transform(stem.begin(), stem.end(), stem.begin(), Lower);
    if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) {
        return true;
    }
    const std::u8string_view view = stem;
    if (!view.starts_with(u8"com") && !view.starts_with(u8"lpt")) {
        return false;
    }
    const std::u8string_view digit = view.substr(3);
    return (digit.size() == 1 && digit[0] >= u8'0' && digit[0] <= u8'9') ||
           std::find(kSuperscriptDigits.begin(), kSuperscriptDigits.end(), digit) != kSuperscriptDigits.end();
}

ZipError CheckComponent(std::u8string_view component)
{
    if (component.size() > kLongestComponent) {
        return ZipError::NameTooLong;
    }
    if (component.find_first_of(kReserved) != std::u8string_view::npos) {
        return ZipError::ReservedCharacter;
    }
    if (component.back() == u8'.' || component.back() == u8' ') {
        return ZipError::TrailingDotOrSpace;
    }
    return IsDevice(component) ? ZipError::ReservedName : ZipError::None;
}

bool HasParentComponent(std::u8string_view name)
{
    for (std::size_t begin = 0; begin <= name.size();) {
        const std::size_t end = std::min(name.find_first_of(u8"/\\", begin), name.size());
        if (name.substr(begin, end - begin) == u8"..") {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

ZipError CheckWhole(std::u8string_view name)
{
    if (!orvcore::IsWellFormedUTF8(orvcore::AsNarrow(name))) {
        return ZipError::BadEncoding;
    }
    if (std::any_of(name.begin(), name.end(), [](char8_t c) { return c < u8' ' || c == u8'\x7f'; })) {
        return ZipError::ControlCharacter;
    }
    if (name.starts_with(u8'/') || name.starts_with(u8'\\')) {
        return ZipError::AbsoluteName;
    }
    if (name.size() >= 2 && IsLetter(name[0]) && name[1] == u8':') {
        return ZipError::DriveLetter;
    }
    if (HasParentComponent(name)) {
        return ZipError::ParentComponent;
    }
    return name.size() > kLongestName ? ZipError::NameTooLong : ZipError::None;
}

} // namespace

EntryName CheckEntryName(std::u8string_view name)
{
    EntryName result{CheckWhole(name), {}};
    for (std::size_t begin = 0; result.error == ZipError::None && begin < name.size();) {
        const std::size_t end = std::min(name.find(u8'/', begin), name.size());
        const std::u8string_view component = name.substr(begin, end - begin);
        begin = end + 1;
        if (component.empty() || component == u8".") {
            continue;
        }
        result.error = CheckComponent(component);
        if (!result.relative.empty()) {
            result.relative += u8'/';
        }
        result.relative += component;
    }
    if (result.error == ZipError::None && result.relative.empty()) {
        result.error = ZipError::EmptyName;
    }
    return result;
}

orvcore::UTF8String FoldCase(std::u8string_view name)
{
    orvcore::UTF8String result;
    const auto* at = reinterpret_cast<const utf8proc_uint8_t*>(name.data());
    const utf8proc_uint8_t* const end = at + name.size();
    while (at < end) {
        utf8proc_int32_t codePoint = 0;
        const utf8proc_ssize_t length = utf8proc_iterate(at, end - at, &codePoint);
        if (length <= 0) {
            result += static_cast<char8_t>(*at++);
            continue;
        }
        at += length;
        std::array<utf8proc_uint8_t, 4> encoded{};
        const utf8proc_ssize_t size = utf8proc_encode_char(utf8proc_toupper(codePoint), encoded.data());
        result.append(encoded.begin(), encoded.begin() + size);
    }
    return result;
}

} // namespace orvstorage::detail
