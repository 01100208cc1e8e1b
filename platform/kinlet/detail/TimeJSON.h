#pragma once

#include <kinlet/PixelAspectRatio.h>
#include <kinlet/Time.h>
#include <orvcore/json/shared/JSONTable.h>

namespace orvcore::serialization::detail {

template <>
struct JSONTable<kinlet::Time> {
    static constexpr auto fields =
        Fields(Required("value", &kinlet::Time::value), Required("scale", &kinlet::Time::scale));
};

// The frame rate's form and the sample rate's.
template <>
struct JSONTable<kinlet::FrameRate> {
    static constexpr auto fields = Fields(Required("ticksperframe", &kinlet::FrameRate::ticksPerFrame));
};

template <>
struct JSONTable<kinlet::PixelAspectRatio> {
    static constexpr auto fields = Fields(Required("numerator", &kinlet::PixelAspectRatio::numerator),
                                          Required("denominator", &kinlet::PixelAspectRatio::denominator));
};

} // namespace orvcore::serialization::detail
