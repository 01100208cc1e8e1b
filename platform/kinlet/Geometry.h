#pragma once

#include <cstdint>

namespace kinlet {

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
