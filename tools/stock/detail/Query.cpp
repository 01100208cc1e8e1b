#include <tools/stock/detail/Query.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace orvtools::stock::detail {

namespace {

// Clients hold positions and totals in signed 32 bits.
constexpr std::uint32_t kMaxNumber = std::numeric_limits<std::int32_t>::max();
constexpr std::uint32_t kMaxCount = 100;

using Number = std::optional<std::uint32_t>;

Number ToNumber(std::string_view text)
{
    std::uint32_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = read.ec == std::errc() && read.ptr == text.data() + text.size() && number <= kMaxNumber;
    return isNumber ? Number(number) : std::nullopt;
}

std::uint32_t NeedNumber(std::string_view name, std::string_view text)
{
    const Number number = ToNumber(text);
    if (!number) {
        throw BadRequest('"' + std::string(name) + "\" is no number");
    }
    return *number;
}

std::uint32_t NumberOr(const http::Request& request, std::string_view name, std::uint32_t absent)
{
    const std::string* const text = request.FindQuery(name);
    return text ? NeedNumber(name, *text) : absent;
}

std::vector<std::string> ListOf(const http::Request& request, std::string_view name)
{
    std::vector<std::string> items;
    const std::string* const text = request.FindQuery(name);
    std::string_view rest = text ? std::string_view(*text) : std::string_view();
    while (!rest.empty()) {
        const auto end = std::min(rest.find(','), rest.size());
        items.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return items;
}

std::optional<bool> PremiumOf(const http::Request& request, std::string_view name)
{
    const std::string* const text = request.FindQuery(name);
    if (!text || *text == "all") {
        return std::nullopt;
    }
    if (*text != "true" && *text != "false") {
        throw BadRequest('"' + std::string(name) + "\" is none of all, true and false");
    }
    return *text == "true";
}

void NeedOneOf(const http::Request& request, std::string_view name, std::string_view value)
{
    const std::string* const text = request.FindQuery(name);
    if (text && *text != value) {
        throw BadRequest('"' + std::string(name) + "\" has another value than " + std::string(value));
    }
}

} // namespace

std::optional<FormatVersion> ToFormatVersion(std::string_view text)
{
    const auto dot = std::min(text.find('.'), text.size());
    const Number major = ToNumber(text.substr(0, dot));
    const Number minor = ToNumber(text.substr(std::min(dot + 1, text.size())));
    return major && minor ? std::optional(FormatVersion{*major, *minor}) : std::nullopt;
}

Query ParseQuery(const http::Request& request)
{
    Query query;
    for (const auto& [name, value] : request.query) {
        if (name == "term") {
            query.terms.push_back(value);
        }
    }
    // The contract has two names for one filter: which of them counts depends on whether there are terms.
    query.premium = PremiumOf(request, query.terms.empty() ? "gallery_premium" : "search_premium");
    NeedOneOf(request, "content_template", "1");
    NeedOneOf(request, "source", "zelt");
    query.type = NumberOr(request, "template_type", 0);
    if (const std::string* const version = request.FindQuery("api_version")) {
        query.newest = ToFormatVersion(*version);
        if (!query.newest) {
            throw BadRequest("\"api_version\" is no version such as 2.2");
        }
    }
    for (const std::string& category : ListOf(request, "category")) {
        query.categories.push_back(NeedNumber("category", category));
    }
    if (const std::string* const id = request.FindQuery("id")) {
        query.id = *id;
    }
    query.columns = ListOf(request, "columns");
    query.first = NumberOr(request, "first", 0);
    query.count = NumberOr(request, "count", kMaxCount);
    if (query.count < 1 || query.count > kMaxCount) {
        throw BadRequest("\"count\" is not between 1 and 100");
    }
    return query;
}

} // namespace orvtools::stock::detail
