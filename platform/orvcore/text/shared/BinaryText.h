#pragma once

#include <orvcore/text/Strings.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace orvcore {

/// Bytes as text: base 64 of RFC 4648 with padding. Thread-safe.
ORVPLATFORM_API UTF8String EncodeBinaryDataToUTF8String(std::span<const std::uint8_t> data);

/// The bytes of a text made by `EncodeBinaryDataToUTF8String`; empty when the text is anything else (a foreign
/// letter, wrong padding, stray bits).
ORVPLATFORM_API std::optional<std::vector<std::uint8_t>> DecodeBinaryDataFromUTF8String(std::u8string_view text);

} // namespace orvcore
