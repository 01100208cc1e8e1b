#pragma once

#include <tools/http/Message.h>

#include <compare>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvtools::stock::detail {

/// A parameter is not of its form.
class BadRequest : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// "2.2"
struct FormatVersion {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;

    auto operator<=>(const FormatVersion&) const = default;
};
std::optional<FormatVersion> ToFormatVersion(std::string_view text);

/// The parameters of a search.
struct Query {
    std::vector<std::string> terms;
    std::optional<bool> premium;
    std::uint32_t type = 0;
    std::optional<FormatVersion> newest; ///< that the client reads
    std::vector<std::uint32_t> categories;
    std::optional<std::string> id;
    std::vector<std::string> columns;
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

/// @throws BadRequest
Query ParseQuery(const http::Request& request);

} // namespace orvtools::stock::detail
