#pragma once

#include <kinlet/MediaFormat.h>
#include <orvcore/json/shared/JSONTable.h>

namespace orvcore::serialization::detail {

template <>
struct JSONTable<kinlet::PixelFormat> {
    static constexpr auto fields = Fields(Required("fourcc", &kinlet::PixelFormat::fourCC),
                                          Required("properties", &kinlet::PixelFormat::properties));
};

template <>
struct JSONTable<kinlet::ChannelLabel> {
    static constexpr auto fields = Fields(Required("channellabel", &kinlet::ChannelLabel::label));
};

} // namespace orvcore::serialization::detail
