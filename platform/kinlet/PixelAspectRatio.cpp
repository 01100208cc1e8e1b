#include <kinlet/PixelAspectRatio.h>

#include <limits>

namespace kinlet {

boost::rational<std::int64_t> PixelAspectRatio::ToRational() const
{
    if (numerator == 0 || denominator == 0) {
        return boost::rational<std::int64_t>(1);
    }
    return {numerator, denominator};
}

std::optional<PixelAspectRatio> PixelAspectRatio::FromRational(const boost::rational<std::int64_t>& ratio)
{
    constexpr std::int64_t highest = std::numeric_limits<std::uint32_t>::max();
    if (ratio.numerator() <= 0 || ratio.numerator() > highest || ratio.denominator() > highest) {
        return std::nullopt;
    }
    return PixelAspectRatio{static_cast<std::uint32_t>(ratio.numerator()),
                            static_cast<std::uint32_t>(ratio.denominator())};
}

} // namespace kinlet
