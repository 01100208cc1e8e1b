#include <tools/http/detail/FileRange.h>

#include <tools/http/detail/Text.h>

#include <algorithm>

namespace orvtools::http::detail {

namespace {

std::string_view Trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t");
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// "-500": the last bytes.
RangeAnswer Suffix(std::optional<std::uint64_t> count, std::uint64_t size)
{
    if (!count) {
        return {};
    }
    // More than there is means all of it.
    const std::uint64_t length = std::min(*count, size);
    return length == 0 ? RangeAnswer{RangeAnswer::Kind::Unsatisfiable, {}}
                       : RangeAnswer{RangeAnswer::Kind::Part, {size - length, size - 1}};
}

} // namespace

RangeAnswer SelectRange(std::string_view header, std::uint64_t size)
{
    std::string_view rest = header;
    const std::string_view unit = Trimmed(TakeUntil(rest, '='));
    // Several ranges would need an answer of many parts; video players ask for one.
    if (!EqualsNoCase(unit, "bytes") || rest.find(',') != rest.npos || rest.find('-') == rest.npos) {
        return {};
    }
    const std::string_view firstText = Trimmed(TakeUntil(rest, '-'));
    const std::string_view lastText = Trimmed(rest);
    if (firstText.empty()) {
        return Suffix(ToNumber(lastText), size);
    }
    const auto first = ToNumber(firstText);
    const auto last = lastText.empty() ? std::optional(~std::uint64_t{0}) : ToNumber(lastText);
    if (!first || !last || *last < *first) {
        return {};
    }
    return *first >= size ? RangeAnswer{RangeAnswer::Kind::Unsatisfiable, {}}
                          : RangeAnswer{RangeAnswer::Kind::Part, {*first, std::min(*last, size - 1)}};
}

bool NamesTag(std::string_view list, std::string_view tag)
{
    while (!list.empty()) {
        std::string_view one = Trimmed(TakeUntil(list, ','));
        // If-None-Match compares weakly: a proxy may have marked our tag as weak.
        one.remove_prefix(one.starts_with("W/") ? 2 : 0);
        if (one == tag || one == "*") {
            return true;
        }
    }
    return false;
}

} // namespace orvtools::http::detail
