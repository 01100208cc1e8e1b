#include <orvcore/files/detail/FilePieces.h>

#include <vector>

namespace orvcore::detail {

bool ReadPieces(const std::filesystem::path& from, const std::function<bool(const char*, std::size_t)>& take,
                std::error_code& error)
{
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    const NativeFile file = NativeFile::Open(from, NativeFile::Mode::Read, error);
    if (error) {
        return false;
    }
    std::vector<char> piece(kPiece);
    std::uint64_t done = 0;
    std::size_t got = piece.size();
    // A short read is the end (NativeFile::ReadAt), so a file whose size is a whole number of pieces gives one empty
    // piece at last. An empty file gives just this one.
    while (got == piece.size()) {
        got = file.ReadAt(done, piece.data(), piece.size(), error);
        if (error || !take(piece.data(), got)) {
            return false;
        }
        done += got;
    }
    return true;
}

} // namespace orvcore::detail
