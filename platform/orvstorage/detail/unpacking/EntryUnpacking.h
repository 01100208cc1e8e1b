#pragma once

#include <orvstorage/detail/ByteProgress.h>
#include <orvstorage/detail/reading/ZipArchive.h>

#include <functional>
#include <vector>

namespace orvstorage::detail {

inline constexpr std::size_t kUnpackedPiece = std::size_t{256} << 10; ///< bytes that are unpacked and written at once

/// Takes one piece of an entry's content.
using ContentWriter = std::function<ZipFault(const char* data, std::size_t size)>;

/// Hands an entry's content to `write` piece by piece, until that fails.
/// @param handle the calling thread's handle on the archive
/// @param piece where the content is unpacked to; its size is that of the pieces
ZipFault StreamEntry(zip_t* handle, const ArchiveEntry& entry, std::size_t index, std::vector<char>& piece,
                     const ContentWriter& write);

/// A host that cancels means the whole call.
inline ZipFault Cancelled()
{
    return ZipFault{ZipError::Cancelled}.At({});
}

/// Writes one entry to a file that appears whole or not at all. The file's folder is created when missing, and removed
/// again after a failure. Progress is reported for the last time when all is read, before the file appears.
ZipFault UnpackToFile(const ZipArchive& archive, std::size_t index, const std::filesystem::path& destination,
                      ByteProgress& progress);

/// Writes one entry over a file that others may have open. An entry of no bytes counts as missing; nothing is written
/// before all of the entry has been checked. Progress counts the content twice: checked, and written.
ZipFault UnpackOver(const ZipArchive& archive, std::size_t index, const std::filesystem::path& destination,
                    ByteProgress& progress);

/// Reads and checks one entry's content. Nothing of it is kept but, where `head` is not null, its first kEntryHeadSize
/// bytes.
ZipFault TestEntry(const ZipArchive& archive, std::size_t index, std::string* head = nullptr);

} // namespace orvstorage::detail
