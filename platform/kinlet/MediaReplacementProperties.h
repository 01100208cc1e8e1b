#pragma once

#include <orvcore/json/JSON.h>

#include <cstdint>
#include <span>
#include <string_view>

namespace kinlet {

/// How replacement media is scaled to its slot. Numbers without a name here are kept.
enum class MediaReplacementFit : std::int32_t {
    /// At its own size.
    kNone = 0,
    /// Scaled to lie inside the slot.
    kFit = 1,
    /// Scaled to cover the slot.
    kFill = 2,
    /// Stretched to the slot's width and height.
    kStretch = 3,
};

/// @name Kinds of media that a slot takes, as bits
/// @{
inline constexpr std::uint32_t kMediaKindStill = 1;
inline constexpr std::uint32_t kMediaKindVideo = 2;
inline constexpr std::uint32_t kMediaKindAudio = 4;
/// @}

/// What a media slot of a template accepts and how it shows it.
struct ORVPLATFORM_API MediaReplacementProperties {
    MediaReplacementFit fit = MediaReplacementFit::kFit;
    /// Bits of `kMediaKind...`.
    std::uint32_t mediaKinds = kMediaKindStill | kMediaKindVideo;
    /// Whether longer media is cut to the slot's duration.
    bool trimToSlot = true;
    /// The template's layer that holds the slot, the host's number; 0 when not stated.
    std::int32_t layerID = 0;
    /// Unknown keys of the document that was read; written again with the record.
    orvcore::serialization::UnknownKeys unknownKeys;

    /// Puts the properties into a control's object: "replacementFit", "replacementKinds", "replacementLayerID" and
    /// "replacementTrimToSlot", replacing earlier ones, and the unknown keys that are not there yet.
    /// @throws orvcore::serialization::json_write_exception  when an unknown key's text is not JSON.
    void ConvertToObject(orvcore::serialization::Object& control) const;

    /// Reads the properties out of a control's object; absent keys take their defaults. `ownKeys` names the keys that
    /// are the control's own; every other key that is not one of the four is kept as unknown.
    /// @throws orvcore::serialization::missing_key_exception  when one of the four holds no usable value.
    static MediaReplacementProperties ExtractProperties(const orvcore::serialization::Object& control,
                                                        std::span<const std::u8string_view> ownKeys = {});

    bool operator==(const MediaReplacementProperties&) const = default;
};

} // namespace kinlet
