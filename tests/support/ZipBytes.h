#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace test {

/// The bitwise CRC-32 of zip archives.
inline std::uint32_t Crc32(const std::string& bytes)
{
    std::uint32_t crc = 0xffffffff;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xedb88320U : 0U);
        }
    }
    return ~crc;
}

/// One entry as a hostile or odd writer would put it down. Every field that is left alone tells the truth.
struct ZipItem {
    std::string name;
    std::string data = {};
    std::uint16_t method = 0;
    std::uint16_t flags = 0x0800;
    std::uint8_t system = 3;
    std::uint32_t attributes = 0100644U << 16;
    std::int64_t crc = -1;
    std::int64_t declaredSize = -1;
    std::int64_t declaredPacked = -1;
    std::int64_t offset = -1;
    bool zip64 = false;
    std::string extra = {};
    std::string comment = {};
};

/// `blocks` + 1 times 775 bytes of zero and more, deflated as tightly as the format allows: some thousand to one.
struct Zeros {
    explicit Zeros(std::size_t blocks)
        : deflated(std::string("\xed\xc0\x01\x01\0\0\0\x80\x90\xfe\xaf\xee\x08\x01", 14) + std::string(blocks, '\0') +
                   '\3')
        , size(static_cast<std::int64_t>(775 + 1032 * blocks))
    {
    }
    std::string deflated;
    std::int64_t size;
};

/// Writes archives byte by byte, honest or not.
class ZipBytes {
public:
    ZipBytes& Add(const ZipItem& item)
    {
        const auto offset = item.offset >= 0 ? static_cast<std::uint64_t>(item.offset) : bytes_.size();
        const std::uint64_t size = Told(item.declaredSize, item.data.size());
        const std::uint64_t packed = Told(item.declaredPacked, item.data.size());
        const auto crc = static_cast<std::uint32_t>(item.crc >= 0 ? item.crc : Crc32(item.data));
        std::string extra = item.extra;
        if (item.zip64) {
            extra += Number(1, 2) + Number(16, 2) + Number(size, 8) + Number(packed, 8);
        }
        const std::string common = Number(item.flags, 2) + Number(item.method, 2) + Number(0x21, 4) + Number(crc, 4) +
                                   Number(item.zip64 ? 0xffffffff : packed, 4) +
                                   Number(item.zip64 ? 0xffffffff : size, 4) + Number(item.name.size(), 2) +
                                   Number(extra.size(), 2);
        bytes_ += "PK\3\4" + Number(45, 2) + common + item.name + extra + item.data;
        directory_ += "PK\1\2" + Number(std::uint64_t{item.system} << 8 | 45U, 2) + Number(45, 2) + common +
                      Number(item.comment.size(), 2) + Number(0, 4) + Number(item.attributes, 4) + Number(offset, 4) +
                      item.name + extra + item.comment;
        ++count_;
        return *this;
    }

    std::string Finish(const std::string& comment = {}) const
    {
        return bytes_ + directory_ + "PK\5\6" + Number(0, 4) + Number(count_, 2) + Number(count_, 2) +
               Number(directory_.size(), 4) + Number(bytes_.size(), 4) + Number(comment.size(), 2) + comment;
    }

    /// The same with zip64 end records, as for archives beyond 4 GiB or 65,535 entries.
    std::string Finish64() const
    {
        const std::string count = Number(count_, 8);
        const std::uint64_t end = bytes_.size() + directory_.size();
        return bytes_ + directory_ + "PK\6\6" + Number(44, 8) + Number(45, 2) + Number(45, 2) + Number(0, 8) + count +
               count + Number(directory_.size(), 8) + Number(bytes_.size(), 8) + "PK\6\7" + Number(0, 4) +
               Number(end, 8) + Number(1, 4) + "PK\5\6" + Number(0, 4) + std::string(12, '\xff') + Number(0, 2);
    }

    static std::string Number(std::uint64_t value, int width)
    {
        std::string bytes;
        for (int i = 0; i < width; ++i) {
            bytes += static_cast<char>(value >> (8 * i));
        }
        return bytes;
    }

private:
    static std::uint64_t Told(std::int64_t told, std::size_t truth)
    {
        return told >= 0 ? static_cast<std::uint64_t>(told) : truth;
    }

    std::string bytes_;
    std::string directory_;
    std::uint64_t count_ = 0;
};

} // namespace test
