#pragma once

#include <cstdint>

namespace kinlet {

/// One pixel format that a source can deliver. Both numbers are the host's; this library stores and compares them.
struct PixelFormat {
    /// Four-character code of the layout.
    std::uint64_t fourCC = 0;
    /// Flags that qualify it.
    std::uint64_t properties = 0;

    bool operator==(const PixelFormat&) const = default;
};

/// What one audio channel carries (left, right, centre ...); the number is the host's.
struct ChannelLabel {
    std::uint64_t label = 0;

    bool operator==(const ChannelLabel&) const = default;
};

/// How the alpha channel is to be read. The numbers are the host's and pass through unchanged; 0 is the default.
enum class AlphaChannelType : std::int64_t {};

/// The order of the fields of an interlaced frame. The numbers are the host's and pass through unchanged; 0 is the
/// default.
enum class FieldType : std::int64_t {};

} // namespace kinlet
