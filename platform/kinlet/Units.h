#pragma once

#include <orvcore/Export.h>

#include <boost/rational.hpp>

#include <cstdint>
#include <optional>

namespace kinlet {

/// The usual scale of a `Time`, and the unit of every tick count without a scale of its own: ticks in one second.
/// All common frame rates and sample rates divide it, the 1000/1001 ones too.
inline constexpr std::int64_t kTicksPerSecond = 254016000000;

/// A point in time or a duration: `value` ticks of which `scale` make a second. A plain value; nothing is reduced or
/// checked, so any two numbers survive being stored. Two times are equal when both numbers are.
struct ORVPLATFORM_API Time {
    std::int64_t value = 0;
    std::int64_t scale = kTicksPerSecond;

    /// The time in milliseconds, rounded towards zero, exact for every value; 0 when the scale is not positive, and
    /// the nearest end of the range where the result does not fit.
    std::int64_t ToMilliseconds() const noexcept;

    bool operator==(const Time&) const = default;
};

/// How often something comes, as the duration of one piece: a video frame, or one audio sample of every channel.
/// A plain value; 0 (the default) means that the rate is not known.
struct ORVPLATFORM_API FrameRate {
    /// The duration of one frame or sample, in ticks of 1/`kTicksPerSecond` second.
    std::int64_t ticksPerFrame = 0;

    /// Frames (or samples) a second, 30000/1001 for example; 0 when `ticksPerFrame` is not positive.
    boost::rational<std::int64_t> ToRational() const;
    /// The rate of this number of frames per second; empty when it is not positive or one frame is no whole number of
    /// ticks.
    static std::optional<FrameRate> FromRational(const boost::rational<std::int64_t>& framesPerSecond);

    bool operator==(const FrameRate&) const = default;
};

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

/// A point or an extent in whole pixels; x grows to the right, y downwards.
struct Point {
    std::int32_t x = 0;
    std::int32_t y = 0;

    bool operator==(const Point&) const = default;
};

/// A point with fractions, in pixels. Compared exactly.
struct PointF {
    double x = 0;
    double y = 0;

    bool operator==(const PointF&) const = default;
};

/// A rectangle in whole pixels. `size.x` is its width and `size.y` its height; nothing is checked.
struct Rect {
    Point topLeft;
    Point size;

    bool operator==(const Rect&) const = default;
};

} // namespace kinlet
