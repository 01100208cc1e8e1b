#pragma once

#include <kinlet/Geometry.h>
#include <orvcore/json/shared/JSONTable.h>

namespace orvcore::serialization::detail {

template <>
struct JSONTable<kinlet::Point> {
    static constexpr auto fields = Fields(Required("x", &kinlet::Point::x), Required("y", &kinlet::Point::y));
};

template <>
struct JSONTable<kinlet::PointF> {
    static constexpr auto fields = Fields(Required("x", &kinlet::PointF::x), Required("y", &kinlet::PointF::y));
};

template <>
struct JSONTable<kinlet::Rect> {
    static constexpr auto fields =
        Fields(Required("topleft", &kinlet::Rect::topLeft), Required("size", &kinlet::Rect::size));
};

} // namespace orvcore::serialization::detail
