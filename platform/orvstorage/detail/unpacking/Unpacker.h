#pragma once

#include <orvcore/files/Files.h>
#include <orvstorage/detail/ByteProgress.h>
#include <orvstorage/detail/unpacking/UnpackPlan.h>

namespace orvstorage::detail {

/// Carries a plan out: all files are first unpacked into a private folder inside `target`, then moved to their places.
/// After a failure everything this call created is gone again, and what it replaced is back.
ZipFault Unpack(const ZipArchive& archive, const UnpackPlan& plan, const std::filesystem::path& target,
                orvcore::IfExists ifExists, ByteProgress& progress);

} // namespace orvstorage::detail
