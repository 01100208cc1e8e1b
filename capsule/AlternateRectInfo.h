#pragma once

#include <cstdint>

namespace orvcapsule {

/// The rectangle that a text control's layer uses instead of its own bounds. A plain value; disabled by default.
struct AlternateRectInfo {
    AlternateRectInfo() = default;
    AlternateRectInfo(bool enabled, std::int32_t composition, std::int32_t layer)
        : isEnabled(enabled)
        , compId(composition)
        , layerId(layer)
    {
    }

    bool isEnabled = false;
    std::int32_t compId = 0;  ///< the composition that holds the layer
    std::int32_t layerId = 0; ///< the layer that gives the rectangle

    bool operator==(const AlternateRectInfo&) const = default;
};

} // namespace orvcapsule
