#include <tools/http/Guard.h>

#include <tools/http/detail/Text.h>

#include <algorithm>
#include <array>

namespace orvtools::http {

// The attacker is any page that the user's browser shows. It can send requests to 127.0.0.1, and by a name of its own
// that leads there (which changes after the page was loaded) it can read the answers. `Host` shows the second, `Origin`
// and `Sec-Fetch-Site` the first. Neither helps against other programs of the machine; that is what the secret is for.

namespace {

struct Header {
    std::string_view name;
    std::string_view value;
};

// Defence in depth: a text of a hostile template that a page put into its own document by mistake could still run no
// script and load nothing from elsewhere.
constexpr auto kProtection = std::to_array<Header>({
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; media-src 'self'; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
});

} // namespace

// A request without a port in its Host is one to port 80. A missing Host is refused: browsers always send one.
bool IsHostLoopback(const Request& request, std::uint16_t port)
{
    const std::string* const host = request.FindHeader("Host");
    const std::string end = ':' + std::to_string(port);
    constexpr auto kNames = std::to_array<std::string_view>({"127.0.0.1", "localhost", "[::1]"});
    return host && std::any_of(kNames.begin(), kNames.end(), [&](std::string_view name) {
               return detail::EqualsNoCase(*host, std::string(name) + end) ||
                      (port == 80 && detail::EqualsNoCase(*host, name));
           });
}

bool IsSameOrigin(const Request& request)
{
    const std::string* const origin = request.FindHeader("Origin");
    const std::string* const host = request.FindHeader("Host");
    const std::string* const site = request.FindHeader("Sec-Fetch-Site");
    // Absent is fine: programs other than browsers send neither, and older browsers no `Sec-Fetch-Site`. "none" is an
    // address that the user has typed.
    return (!origin || (host && detail::EqualsNoCase(*origin, "http://" + *host))) &&
           (!site || *site == "same-origin" || *site == "none");
}

bool IsSecret(std::string_view given, std::string_view secret) noexcept
{
    // No early end: the time of a refusal would tell how many characters were right, one after the other.
    unsigned differences = given.size() == secret.size() ? 0 : 1;
    for (std::size_t i = 0; i < std::min(given.size(), secret.size()); ++i) {
        differences |=
            static_cast<unsigned>(static_cast<unsigned char>(given[i]) ^ static_cast<unsigned char>(secret[i]));
    }
    return differences == 0;
}

void Protect(Response& response)
{
    for (const Header& header : kProtection) {
        const bool isThere = std::any_of(response.headers.begin(), response.headers.end(), [&](const auto& given) {
            return detail::EqualsNoCase(given.first, header.name);
        });
        if (!isThere) {
            response.headers.emplace_back(header.name, header.value);
        }
    }
}

} // namespace orvtools::http
