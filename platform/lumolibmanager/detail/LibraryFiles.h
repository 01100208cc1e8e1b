#pragma once

#include <lumolibmanager/detail/Manifest.h>

#include <cstdint>
#include <filesystem>
#include <vector>

namespace lumolibmanager::detail {

/// Which files of a library lie on disk.
struct LibraryFiles {
    std::vector<std::uint32_t> present; ///< for each element a bit for each of its files; none: it is left out
    std::vector<Refusal> refused;       ///< elements and files that were left out

    bool Has(std::size_t element) const noexcept
    {
        return present[element] != 0;
    }
    bool Has(std::size_t element, std::size_t file) const noexcept
    {
        return (present[element] >> file & 1U) != 0;
    }
};

/// Looks, on all processors, at the files of the manifest's elements before `end` that `files` does not know yet.
void LookAtFiles(const std::filesystem::path& folder, const Manifest& manifest, std::size_t end, LibraryFiles& files);

} // namespace lumolibmanager::detail
