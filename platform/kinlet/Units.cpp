#include <kinlet/Units.h>

#include <algorithm>
#include <limits>

namespace kinlet {

namespace {

// part * 1000 / whole for part < whole, without a wider type: bit by bit, from the top. The product may need 74 bits,
// and the language has no such type.
std::uint64_t Thousandths(std::uint64_t part, std::uint64_t whole) noexcept
{
    std::uint64_t quotient = 0;
    std::uint64_t rest = 0;
    const auto reduce = [&] {
        if (rest >= whole) {
            rest -= whole;
            ++quotient;
        }
    };
    for (std::uint64_t bit = 512; bit != 0; bit /= 2) {
        quotient *= 2;
        rest *= 2;
        reduce();
        if ((1000 & bit) != 0) {
            rest += part;
            reduce();
        }
    }
    return quotient;
}

} // namespace

std::int64_t Time::ToMilliseconds() const noexcept
{
    if (scale <= 0) {
        return 0;
    }
    const bool negative = value < 0;
    const std::uint64_t ticks = negative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    const auto whole = static_cast<std::uint64_t>(scale);
    constexpr auto highest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    std::uint64_t milliseconds = highest;
    // Beyond the range of the result the largest value stands for all.
    if (const std::uint64_t seconds = ticks / whole; seconds <= highest / 1000) {
        milliseconds = std::min(highest, seconds * 1000 + Thousandths(ticks % whole, whole));
    }
    return negative ? -static_cast<std::int64_t>(milliseconds) : static_cast<std::int64_t>(milliseconds);
}

boost::rational<std::int64_t> FrameRate::ToRational() const
{
    return ticksPerFrame > 0 ? boost::rational<std::int64_t>(kTicksPerSecond, ticksPerFrame)
                             : boost::rational<std::int64_t>(0);
}

std::optional<FrameRate> FrameRate::FromRational(const boost::rational<std::int64_t>& framesPerSecond)
{
    // In lowest terms the numerator must divide kTicksPerSecond * denominator, hence kTicksPerSecond itself.
    const std::int64_t numerator = framesPerSecond.numerator();
    if (numerator <= 0 || kTicksPerSecond % numerator != 0) {
        return std::nullopt;
    }
    const std::int64_t ticks = kTicksPerSecond / numerator;
    if (framesPerSecond.denominator() > std::numeric_limits<std::int64_t>::max() / ticks) {
        return std::nullopt;
    }
    return FrameRate{ticks * framesPerSecond.denominator()};
}

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
