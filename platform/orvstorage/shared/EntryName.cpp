#include <orvstorage/shared/EntryName.h>

#include <orvcore/files/shared/PathNames.h>
#include <orvcore/text/shared/ASCII.h>

#include <utf8proc.h>

#include <algorithm>
#include <array>

// One set of rules on every system. A name that Windows would take for a device, for a stream of another file (":") or
// for another name (a closing dot) is refused on Linux too: a package that unpacks on one system unpacks on all, and
// the tests of both kinds run everywhere.

namespace orvstorage::detail {

namespace {

constexpr std::size_t kLongestComponent = 255; // bytes, the least that the systems' file systems take
constexpr std::size_t kLongestName = 2048;
// What Windows allows in no name. The back-slash is here because it is a separator there and a character elsewhere;
// where an archive says that it was made on Windows, the reader has turned its back-slashes into slashes before.
constexpr std::u8string_view kReserved = u8"<>:\"|?*\\";

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
    return orvcore::IsDeviceName(component) ? ZipError::ReservedName : ZipError::None;
}

// Parted at both kinds of slash: on Windows either one leads up.
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

// A name may break several rules; the first one is told, so what an attack would break stands first.
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
    if (name.size() >= 2 && orvcore::IsASCIILetter(name[0]) && name[1] == u8':') {
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
        // "a//b" and "./a/b" are "a/b": under one name they are found to be repeated.
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

// Character by character to upper case, as the file systems of Windows compare names. A full folding, which makes "ss"
// of one letter, would see clashes where those file systems see two names.
orvcore::UTF8String FoldCase(std::u8string_view name)
{
    orvcore::UTF8String result;
    const auto* at = reinterpret_cast<const utf8proc_uint8_t*>(name.data());
    const utf8proc_uint8_t* const end = at + name.size();
    while (at < end) {
        utf8proc_int32_t codePoint = 0;
        const utf8proc_ssize_t length = utf8proc_iterate(at, end - at, &codePoint);
        if (length <= 0) {
            // Not text: refused elsewhere, and here as good as any other byte.
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
