#pragma once

#include <kinlet/SourceInfo.h>
#include <kinlet/Spreadsheet.h>
#include <kinlet/TextEditInfo.h>

#include <concepts>

namespace kinlet {

/// The media-link records that have a JSON form.
template <class T>
concept MediaLinkRecord = std::same_as<T, Time> || std::same_as<T, FrameRate> || std::same_as<T, PixelAspectRatio> ||
    std::same_as<T, Point> || std::same_as<T, PointF> || std::same_as<T, Rect> || std::same_as<T, PixelFormat> ||
    std::same_as<T, ChannelLabel> || std::same_as<T, ColorRGBA> || std::same_as<T, ColorProfile> ||
    std::same_as<T, ColorSpaceMetadata> || std::same_as<T, ColorSpace> || std::same_as<T, ServerConnection> ||
    std::same_as<T, RemoteAssetRequest> || std::same_as<T, RemoteProductionRequest> || std::same_as<T, MissingFont> ||
    std::same_as<T, MissingPlugin> || std::same_as<T, MissingFootage> || std::same_as<T, MissingAssets> ||
    std::same_as<T, CapsuleParams> || std::same_as<T, SourceInfo> || std::same_as<T, SpreadsheetColumnInfo> ||
    std::same_as<T, SpreadsheetCell> || std::same_as<T, SpreadsheetData> || std::same_as<T, SourceTextFontEditInfo> ||
    std::same_as<T, TextEditInfo>;

/// A record as a JSON value tree: an object whose keys are always all there (but for `ColorSpace`, which leaves out
/// what equals its default), an array for `ColorRGBA`, a scalar or an object for a `SpreadsheetCell`. Thread-safe.
/// @throws orvcore::serialization::json_write_exception  for a number that is not finite, and for a kept unknown key
///         whose text is not JSON.
template <MediaLinkRecord Record>
ORVPLATFORM_API orvcore::serialization::Variant ToJSON(const Record& record);

/// Replaces `record` by what a JSON value tree holds. Integers are accepted for doubles and the other way round where
/// no digit is lost. Keys that the record does not know are ignored, or kept by records with an `unknownKeys` member.
/// @return false, `record` being left as it is, when the tree as a whole is of no usable kind (not an object).
/// @throws orvcore::serialization::missing_key_exception  naming the key, when a required key is absent or a key that
///         is there, required or not, holds no usable value (null, another kind, a number out of range); `record` is
///         then left as it is.
/// @throws orvcore::serialization::json_write_exception  for a tree that holds a value of a type that trees do not
///         have, or is nested too deep.
template <MediaLinkRecord Record>
ORVPLATFORM_API bool FromJSON(const orvcore::serialization::Variant& tree, Record& record);

} // namespace kinlet
