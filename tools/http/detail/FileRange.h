#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvtools::http::detail {

/// Part of a file: at least one byte of it.
struct ByteRange {
    std::uint64_t first;
    std::uint64_t last; ///< included

    bool operator==(const ByteRange&) const = default;
};

/// What a `Range` header asks of a file.
struct RangeAnswer {
    enum class Kind : std::uint8_t { Whole, Part, Unsatisfiable } kind = Kind::Whole;
    ByteRange part{}; ///< of Part

    bool operator==(const RangeAnswer&) const = default;
};

/// One range is answered; several, another unit and what cannot be read get the whole file, as the protocol allows.
RangeAnswer SelectRange(std::string_view header, std::uint64_t size);

/// True when the list of entity tags names this one, or "*".
bool NamesTag(std::string_view list, std::string_view tag);

} // namespace orvtools::http::detail
