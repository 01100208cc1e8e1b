#pragma once

#include <validation/Finding.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace orvcapsule {

class CapsuleZip;

/// @name Judging a template
/// Everything that is wrong with a template, for its author or for a host that asks why it is not usable. Nothing is
/// changed. Thread-safe; a call may take seconds for a large package, all of which is read. Time and memory are bounded
/// whatever a package holds. Nothing is thrown but `std::bad_alloc`.
/// @{

/// Judges what lies at `path`: a folder as the parts of a package that is still to be packed (a folder's files bear the
/// entries' names), a file whose name ends in ".json" as a definition, any other file as a package.
/// @param password the package's; empty: none
ORVCAPSULE_API Findings ValidateTemplate(const std::filesystem::path& path, const std::string& password = {});

/// Judges an open package: its archive and the data of every entry, its definition, its other parts. The package's last
/// failure is of no meaning afterwards.
ORVCAPSULE_API Findings ValidatePackage(const CapsuleZip& package);

/// Judges the text of a definition document. Of one that is for a newer version of the format only that is told.
ORVCAPSULE_API Findings ValidateDefinition(std::u8string_view text);
/// @}

} // namespace orvcapsule
