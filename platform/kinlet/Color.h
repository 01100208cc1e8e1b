#pragma once

#include <orvcore/text/Strings.h>

#include <cstdint>
#include <vector>

namespace kinlet {

/// A colour with opacity. 0 is none and 1 full intensity; values outside that range (brighter than white) are kept.
/// Compared exactly.
struct ColorRGBA {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(const ColorRGBA&) const = default;
};

/// A colour profile. What it holds is its identity: two profiles with the same name and bytes are the same profile.
/// Default: no profile.
struct ColorProfile {
    orvcore::UTF16String name;
    /// The profile itself, an ICC profile as a rule; opaque to this library.
    std::vector<std::uint8_t> data;

    bool operator==(const ColorProfile&) const = default;
};

/// What is known of the light levels of a colour space. As with profiles, what it holds is its identity.
struct ColorSpaceMetadata {
    std::int64_t version = 0;
    /// Brightest light, in candela per square metre; 0 when not known.
    std::uint64_t peakLuminance = 0;
    /// Whether the source states the range of its data (full or narrow).
    bool dataRangeInfoValid = false;

    bool operator==(const ColorSpaceMetadata&) const = default;
};

/// The colour space that a source works in. Default: none stated.
struct ColorSpace {
    ColorProfile baseColorProfile;
    /// Kind of the base profile; the number is the host's.
    std::uint32_t baseProfileType = 0;
    /// Whether the space is the linear-light variant of its profile.
    bool linearized = false;
    ColorSpaceMetadata metadata;

    bool operator==(const ColorSpace&) const = default;
};

} // namespace kinlet
