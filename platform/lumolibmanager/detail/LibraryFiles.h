#pragma once

#include <lumolibmanager/detail/Manifest.h>

#include <orvcore/files/FileSystem.h>

#include <cstdint>
#include <filesystem>
#include <vector>

namespace lumolibmanager::detail {

/// Which files of a library lie on disk.
struct LibraryFiles {
    std::vector<std::uint32_t> present; ///< for each element a bit for each of its files; none: it is left out
    std::vector<Refusal> refused;       ///< elements and files that were left out
    /// What the system told of an element's files.
    struct Facts {
        orvcore::FileInfo primary;
        orvcore::FileInfo alternate;
    };
    std::vector<Facts> latest; ///< of the elements that were looked at last

    bool Has(std::size_t element) const noexcept
    {
        return present[element] != 0;
    }
    bool Has(std::size_t element, std::size_t file) const noexcept
    {
        return (present[element] >> file & 1U) != 0;
    }
};

/// Looks, on all processors, at the files of those of a manifest's first elements that `files` does not know yet.
void LookAtFiles(const std::filesystem::path& folder, std::span<const ManifestElement> elements, LibraryFiles& files);

} // namespace lumolibmanager::detail
