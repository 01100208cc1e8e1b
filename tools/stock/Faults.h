#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace orvtools::stock {

/// What a development service does wrong, so that clients can be tried. Everything may be combined.
struct Faults {
    enum class Where : std::uint8_t { Everywhere, Searches, Files };
    enum class Length : std::uint8_t { Right, Longer, Shorter };
    /// What becomes of the body after its first half.
    enum class SecondHalf : std::uint8_t {
        Sent,
        Cut,     ///< the connection is closed instead
        Withheld ///< nothing more comes, and the connection stays
    };

    Where where = Where::Everywhere;
    std::uint32_t times = 0; ///< so many requests suffer, all later ones are answered well; 0: all suffer

    std::chrono::milliseconds delay{0};         ///< before an answer
    std::optional<unsigned> status = {};        ///< answered instead
    std::optional<std::string> retryAfter = {}; ///< the header `Retry-After` beside `status`
    std::optional<std::string> redirectTo = {}; ///< "https://host": redirected there, with the request's own target
    bool redirectsToItself = false;             ///< a loop
    Length announced = Length::Right;           ///< `Content-Length` against the body
    SecondHalf secondHalf = SecondHalf::Sent;
    std::size_t maxRows = std::numeric_limits<std::size_t>::max(); ///< of a page, whatever was asked for; "total" stays
    std::optional<std::string> body = {};                          ///< sent in place of an answer's own
};

} // namespace orvtools::stock
