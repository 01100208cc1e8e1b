#include <tools/http/Target.h>

#include <tools/http/detail/Text.h>
#include <tools/support/ASCII.h>

#include <orvcore/text/Strings.h>

#include <algorithm>

namespace orvtools::http {

// A target is decoded exactly once, here, and what could be read in two ways is refused and not repaired: an escaped
// slash (one part or two?), "." and ".." (which client has resolved them?), an empty part, a back-slash (a separator on
// Windows), a control character, ill-formed UTF-8. So a handler that compares with names cannot be got round by another
// spelling.

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

bool IsUnreserved(char letter) noexcept
{
    return IsLetter(letter) || IsDigit(letter) || std::string_view("-._~").find(letter) != std::string_view::npos;
}

// A part of a path. An escaped slash would change which parts there are.
bool AppendPart(std::string_view escaped, std::string& path)
{
    const auto part = DecodePercent(escaped);
    if (!part || part->empty() || *part == "." || *part == ".." || part->find_first_of("/\\") != std::string::npos ||
        std::any_of(part->begin(), part->end(), &detail::IsControl)) {
        return false;
    }
    path += '/' + *part;
    return true;
}

bool ParsePath(std::string_view rest, std::string& path)
{
    path.clear();
    if (rest.empty() || rest.front() != '/') {
        return false;
    }
    rest.remove_prefix(1);
    while (!rest.empty()) {
        const bool endsWithSlash = rest.find('/') == rest.size() - 1;
        if (!AppendPart(detail::TakeUntil(rest, '/'), path)) {
            return false;
        }
        path += endsWithSlash ? "/" : "";
    }
    path += path.empty() ? "/" : "";
    return true;
}

bool ParseQuery(std::string_view rest, Fields& query)
{
    query.clear();
    while (!rest.empty()) {
        std::string_view pair = detail::TakeUntil(rest, '&');
        if (pair.empty()) {
            continue;
        }
        auto name = DecodePercent(detail::TakeUntil(pair, '='));
        auto value = DecodePercent(pair);
        if (!name || !value) {
            return false;
        }
        query.emplace_back(std::move(*name), std::move(*value));
    }
    return true;
}

} // namespace

std::optional<std::string> DecodePercent(std::string_view text)
{
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? HexValue(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexValue(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    const bool isText = decoded.find('\0') == std::string::npos && orvcore::IsWellFormedUTF8(decoded);
    return isText ? std::optional(std::move(decoded)) : std::nullopt;
}

bool ParseTarget(std::string_view target, Request& request)
{
    request.target = target;
    const std::string_view path = detail::TakeUntil(target, '?');
    return ParsePath(path, request.path) && ParseQuery(target, request.query);
}

std::string EncodePercent(std::string_view text)
{
    std::string encoded;
    for (const char letter : text) {
        if (IsUnreserved(letter)) {
            encoded += letter;
        } else {
            const auto byte = static_cast<unsigned char>(letter);
            encoded += {'%', kHexDigits[byte / 16], kHexDigits[byte % 16]};
        }
    }
    return encoded;
}

} // namespace orvtools::http
