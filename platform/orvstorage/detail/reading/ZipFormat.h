#pragma once

#include <orvstorage/detail/reading/ByteCursor.h>

#include <optional>

namespace orvstorage::detail {

/// @name Numbers of the zip format
/// Each record begins with its signature, "PK" and two bytes, low byte first. Sizes are those of the records' fixed
/// parts; names, extra fields and comments come behind them.
/// @{
inline constexpr std::uint32_t kLocalSignature = 0x04034b50;
inline constexpr std::uint32_t kDescriptorSignature = 0x08074b50;
inline constexpr std::uint32_t kEntrySignature = 0x02014b50;
inline constexpr std::uint32_t kEndSignature = 0x06054b50;
inline constexpr std::uint32_t kEnd64Signature = 0x06064b50;
inline constexpr std::uint32_t kLocator64Signature = 0x07064b50;
inline constexpr std::size_t kLocalSize = 30;
inline constexpr std::size_t kEntrySize = 46;
inline constexpr std::size_t kEndSize = 22;
inline constexpr std::size_t kEnd64Size = 56;
inline constexpr std::size_t kLocator64Size = 20;
inline constexpr std::uint16_t kZip64Field = 0x0001;
inline constexpr std::uint16_t kAESField = 0x9901;
inline constexpr std::uint16_t kAESMethod = 99; ///< the real method stands in the AES field
inline constexpr std::uint16_t kEncryptedFlag = 0x0001;
inline constexpr std::uint16_t kDescriptorFlag = 0x0008; ///< sizes and checksum stand behind the data
inline constexpr std::uint16_t kStrongEncryptionFlag = 0x0040;
inline constexpr std::uint16_t kUTF8Flag = 0x0800;
inline constexpr std::uint16_t kMaskedFlag = 0x2000;
inline constexpr std::uint32_t kIn64 = 0xffffffff; ///< the value stands in the zip64 field
/// @}

/// The signature that `bytes`, at least four, begin with.
inline std::uint32_t SignatureOf(std::span<const unsigned char> bytes)
{
    return ByteCursor(bytes).Take32();
}

/// The content of the first extra field of a kind; none when the extra fields hold no such.
inline std::optional<ByteCursor> FindField(std::span<const unsigned char> extra, std::uint16_t wanted)
{
    ByteCursor cursor(extra);
    while (cursor.Left() >= 4) {
        const std::uint16_t id = cursor.Take16();
        const std::uint16_t length = cursor.Take16();
        const auto content = cursor.TakeBytes(length);
        if (id == wanted) {
            return ByteCursor(content);
        }
    }
    return std::nullopt;
}

} // namespace orvstorage::detail
