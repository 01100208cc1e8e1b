#pragma once

#include <orvcore/text/shared/LittleEndian.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace orvstorage::detail {

/// Reads little-endian numbers from bytes and never beyond them: a read past the end gives zero, sets Failed and ends
/// the bytes. So a reader takes all fields first and asks once whether they were there.
class ByteCursor {
public:
    explicit ByteCursor(std::span<const unsigned char> bytes)
        : bytes_(bytes)
    {
    }

    std::uint64_t Take(std::size_t width)
    {
        const auto piece = TakeBytes(width);
        return orvcore::LoadLittleEndian(piece.data(), piece.size());
    }
    std::uint16_t Take16()
    {
        return static_cast<std::uint16_t>(Take(2));
    }
    std::uint32_t Take32()
    {
        return static_cast<std::uint32_t>(Take(4));
    }
    std::uint64_t Take64()
    {
        return Take(8);
    }
    std::span<const unsigned char> TakeBytes(std::size_t count)
    {
        if (count > bytes_.size()) {
            failed_ = true;
            bytes_ = {}; // nothing is left, so that no loop over what is left goes on
            return {};
        }
        const auto piece = bytes_.first(count);
        bytes_ = bytes_.subspan(count);
        return piece;
    }
    void Skip(std::size_t count)
    {
        TakeBytes(count);
    }
    std::size_t Left() const
    {
        return bytes_.size();
    }
    bool Failed() const
    {
        return failed_;
    }

private:
    std::span<const unsigned char> bytes_;
    bool failed_ = false;
};

} // namespace orvstorage::detail
