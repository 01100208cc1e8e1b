#include <orvcore/json/detail/JSONText.h>

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace orvcore::serialization::detail {

namespace {

// Past the closing quote of the string that begins at `at`.
std::size_t PastString(std::string_view json, std::size_t at) noexcept
{
    for (++at; at < json.size() && json[at] != '"'; ++at) {
        at += json[at] == '\\' ? 1U : 0U;
    }
    return std::min(at + 1, json.size());
}

bool IsBigInteger(std::string_view number) noexcept
{
    const char* const end = number.data() + number.size();
    std::int64_t negative = 0;
    std::uint64_t positive = 0;
    const auto [past, error] = number.starts_with('-') ? std::from_chars(number.data(), end, negative)
                                                       : std::from_chars(number.data(), end, positive);
    return past == end && error == std::errc::result_out_of_range;
}

} // namespace

// A value stands behind every comma and every opening bracket that is not closed at once.
std::size_t CountValues(std::string_view json) noexcept
{
    std::size_t count = 1;
    bool isOpened = false;
    for (std::size_t at = 0; at < json.size();) {
        const char c = json[at];
        if (c == ' ' || (c >= '\t' && c <= '\r')) {
            ++at;
            continue;
        }
        count -= isOpened && (c == ']' || c == '}') ? 1U : 0U;
        isOpened = c == '[' || c == '{';
        count += isOpened || c == ',' ? 1U : 0U;
        at = c == '"' ? PastString(json, at) : at + 1;
    }
    return count;
}

// Everything that could be a number is looked at, outside of texts. Digits that are no JSON number (01, 1e) the parser
// refuses again.
std::string WithBigIntegersAsDoubles(std::string_view json)
{
    std::string result;
    std::size_t copied = 0;
    for (std::size_t at = 0; at < json.size();) {
        if (json[at] == '"') {
            at = PastString(json, at);
            continue;
        }
        const std::size_t end = std::min(json.find_first_not_of("+-.0123456789Ee", at), json.size());
        if (IsBigInteger(json.substr(at, end - at))) {
            result.append(json, copied, end - copied).append("e0"); // with an exponent it is read as a double
            copied = end;
        }
        at = std::max(end, at + 1);
    }
    return copied == 0 ? result : result.append(json, copied);
}

} // namespace orvcore::serialization::detail
