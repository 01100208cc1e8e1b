#pragma once

#include <orvstorage/ZipFile.h>

#include <filesystem>
#include <optional>

namespace orvcapsule::detail {

/// Extracts a template's project into `directory`: Corvid's, or where there is none Tessel's with its side file. Each
/// is looked for in the application's language first.
/// @param name of the file, without its extension
/// @return the file's name; empty when there is no project, or none that can be had, as the archive's last failure
/// tells
std::optional<std::filesystem::path> ExtractProject(const orvstorage::ZipFile& zip,
                                                    const std::filesystem::path& directory,
                                                    const orvcore::UTF16String& name,
                                                    const orvstorage::ZipProgress& progress, void* opaque);

} // namespace orvcapsule::detail
