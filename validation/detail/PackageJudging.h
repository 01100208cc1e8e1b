#pragma once

#include <orvstorage/ZipFailure.h>
#include <validation/detail/FindingList.h>

#include <filesystem>

namespace orvcapsule {
class CapsuleZip;
} // namespace orvcapsule

namespace orvcapsule::detail {

/// Judges an open package.
void JudgePackage(const CapsuleZip& package, FindingList& findings);

/// Judges a file that holds a definition.
void JudgeDefinitionFile(const std::filesystem::path& path, FindingList& findings);

/// Judges the files of a folder as the parts of a package.
void JudgeFolder(const std::filesystem::path& folder, FindingList& findings);

} // namespace orvcapsule::detail
