#pragma once

#include <orvcore/Export.h>

#include <boost/rational.hpp>

#include <cstdint>
#include <optional>

namespace kinlet {

/// The width of a pixel over its height. Holds the two numbers exactly as given: 10/11 stays 10/11, 2/2 stays 2/2, and
/// a denominator of 0, which documents may hold, is kept too. Default: square pixels. Two ratios are equal when both
/// numbers are; compare `ToRational()` for equality in value.
struct ORVPLATFORM_API PixelAspectRatio {
    std::uint32_t numerator = 1;
    std::uint32_t denominator = 1;

    /// The ratio in lowest terms; 1 when either number is 0, as such pixels can only be shown square.
    boost::rational<std::int64_t> ToRational() const;
    /// The ratio of a rational number; empty when it is not positive or a part does not fit 32 bits.
    static std::optional<PixelAspectRatio> FromRational(const boost::rational<std::int64_t>& ratio);

    bool operator==(const PixelAspectRatio&) const = default;
};

} // namespace kinlet
