#pragma once

#include <orvcore/files/Files.h>
#include <orvstorage/detail/ByteProgress.h>
#include <orvstorage/detail/unpacking/UnpackPlan.h>

namespace orvstorage::detail {

/// Writes one entry to a file that appears whole or not at all. The file's folder is created when missing, and removed
/// again after a failure. Progress is reported for the last time when all is read, before the file appears.
bool UnpackToFile(const ZipArchive& archive, std::size_t index, const std::filesystem::path& destination,
                  ByteProgress& progress, ZipFailure& failure);

/// Writes one entry over a file that others may have open. An entry of no bytes counts as missing; nothing is written
/// before all of the entry has been checked.
bool UnpackOver(const ZipArchive& archive, std::size_t index, const std::filesystem::path& destination,
                ZipFailure& failure);

/// Reads and checks one entry's content. Nothing of it is kept but, where `head` is not null, its first kEntryHeadSize
/// bytes.
bool TestEntry(const ZipArchive& archive, std::size_t index, ZipFailure& failure, std::string* head = nullptr);

/// Carries a plan out: all files are first unpacked into a private folder inside `target`, then moved to their places.
/// After a failure everything this call created is gone again, and what it replaced is back.
bool Unpack(const ZipArchive& archive, const UnpackPlan& plan, const std::filesystem::path& target,
            orvcore::IfExists ifExists, ByteProgress& progress, ZipFailure& failure);

} // namespace orvstorage::detail
