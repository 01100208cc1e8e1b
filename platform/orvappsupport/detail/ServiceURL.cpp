#include <orvappsupport/detail/ServiceURL.h>

#include <orvcore/text/shared/ASCII.h>

#include <curl/curl.h>

#include <algorithm>
#include <memory>

// URLs are read by libcurl's own parser: what is judged here (scheme, host, port) is then what libcurl connects to. A
// second parser would be a second opinion, and the difference a way to have credentials sent elsewhere. User names in
// URLs are refused: "https://stock.example@evil.example/" reads like the one host and leads to the other.

namespace orvappsupport::detail {

namespace {

class ParsedURL {
public:
    explicit ParsedURL(const std::string& text)
    {
        Set(text);
    }

    /// Sets the whole URL, or what a relative one changes.
    bool Set(const std::string& text)
    {
        const bool isText = text.find('\0') == text.npos; // the library reads up to it
        isValid_ = isText && handle_ &&
                   curl_url_set(handle_.get(), CURLUPART_URL, text.c_str(), CURLU_DISALLOW_USER) == CURLUE_OK;
        return isValid_;
    }
    /// Empty where there is no such part.
    std::string Get(CURLUPart part, unsigned flags = 0) const
    {
        char* value = nullptr;
        if (!isValid_ || curl_url_get(handle_.get(), part, &value, flags) != CURLUE_OK) {
            return {};
        }
        const std::unique_ptr<char, decltype(&curl_free)> owner(value, &curl_free);
        return value;
    }
    bool IsWeb() const
    {
        const std::string scheme = Scheme();
        return (scheme == "http" || scheme == "https") && !Host().empty();
    }
    std::string Scheme() const
    {
        return Lower(Get(CURLUPART_SCHEME));
    }
    std::string Host() const
    {
        return Lower(Get(CURLUPART_HOST));
    }
    std::string Port() const
    {
        return Get(CURLUPART_PORT, CURLU_DEFAULT_PORT);
    }

private:
    static std::string Lower(std::string text)
    {
        std::transform(text.begin(), text.end(), text.begin(), orvcore::ToASCIILower<char>);
        return text;
    }

    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> handle_{curl_url(), &curl_url_cleanup};
    bool isValid_ = false;
};

} // namespace

bool IsWebURL(const std::string& url)
{
    return ParsedURL(url).IsWeb();
}

std::string Escape(std::string_view text)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr std::string_view kPlain = "-._~";
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        if (orvcore::IsASCIILetter(c) || orvcore::IsASCIIDigit(c) || kPlain.find(c) != kPlain.npos) {
            escaped += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            escaped += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
        }
    }
    return escaped;
}

std::string MakeURL(const std::string& base, std::string_view path,
                    const std::vector<std::pair<std::string, std::string>>& query)
{
    if (!IsWebURL(base) || base.find_first_of("?#") != base.npos) {
        return {};
    }
    std::string url = base.substr(0, base.find_last_not_of('/') + 1);
    url += path;
    char separator = '?';
    for (const auto& [name, value] : query) {
        url += separator;
        url += Escape(name) + '=' + Escape(value);
        separator = '&';
    }
    return url;
}

std::optional<std::string> FollowRedirect(const std::string& url, const std::string& location)
{
    ParsedURL parsed(url);
    const bool wasSafe = parsed.Scheme() == "https";
    if (!parsed.IsWeb() || !parsed.Set(location) || !parsed.IsWeb() || (wasSafe && parsed.Scheme() != "https")) {
        return std::nullopt;
    }
    return parsed.Get(CURLUPART_URL);
}

bool HaveSameOrigin(const std::string& a, const std::string& b)
{
    const ParsedURL first(a);
    const ParsedURL second(b);
    return first.IsWeb() && first.Scheme() == second.Scheme() && first.Host() == second.Host() &&
           first.Port() == second.Port();
}

bool IsLoopback(const std::string& url)
{
    const std::string host = ParsedURL(url).Host();
    const bool isNumber = host.find_first_not_of("0123456789.") == host.npos;
    return host == "localhost" || host == "[::1]" || (isNumber && host.starts_with("127."));
}

} // namespace orvappsupport::detail
