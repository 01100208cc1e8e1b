#include <orvmetadatadb/detail/SetAside.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/Paths.h>
#include <orvmetadatadb/detail/IndexFile.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace orvmetadatadb::detail {

namespace {

// The header of an SQLite file: 16 bytes of text, at 68 the application's number, high byte first, 100 bytes in all.
constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kHeaderSize = 100;
constexpr std::size_t kApplicationIdOffset = 68;

std::filesystem::path SystemPath(const orvcore::UTF16String& path)
{
    return orvcore::ToSystemPath(orvcore::PathFromUTF16(path));
}

std::uint32_t BigEndian(const char* bytes) noexcept
{
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        value = (value << 8U) | static_cast<unsigned char>(bytes[i]);
    }
    return value;
}

} // namespace

// Asked of a file that SQLite cannot read, so only its header can tell. A header that is cut short, or that was never
// written (a machine that lost power leaves zeros), is taken for ours: no other program has a reason to leave such a
// file at this path.
bool WasSearchIndex(const orvcore::UTF16String& path)
{
    // Not by SQLite, which has just refused it.
    std::ifstream file(SystemPath(path), std::ios::binary);
    std::array<char, kHeaderSize> header{};
    file.read(header.data(), header.size());
    const auto size = static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0));
    if (size == 0) {
        return false;
    }
    if (size < kHeaderSize) {
        const std::size_t compared = std::min(size, kMagic.size());
        return std::string_view(header.data(), compared) == kMagic.substr(0, compared);
    }
    return BigEndian(header.data() + kApplicationIdOffset) == IndexFile::kApplicationId ||
           std::all_of(header.begin(), header.end(), [](char c) { return c == 0; });
}

// The log and its index go with the file: beside a new file the old log would be played back into it.
bool SetAside(const orvcore::UTF16String& path)
{
    // The database first: when that cannot be moved (another process has it open on Windows), nothing else is touched.
    // Were its log moved first, changes that stand only there would be lost.
    for (const char16_t* suffix : {u"", u"-wal", u"-shm", u"-journal"}) {
        std::error_code error;
        const std::filesystem::path from = SystemPath(path + suffix);
        if (orvcore::Exists(from)) {
            std::filesystem::rename(from, SystemPath(path + u".damaged" + suffix), error);
            if (error) {
                return false;
            }
        }
    }
    return true;
}

} // namespace orvmetadatadb::detail
