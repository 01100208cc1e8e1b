#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace lumolibmanager::detail {

struct ManifestFile {
    std::string role;
    std::string path; ///< below the library's folder, with forward slashes, and never out of it but for links
};

struct ManifestElement {
    std::string id;
    std::string name;
    std::string type;
    std::vector<ManifestFile> files; ///< each role once, the primary file first
};

/// One thing that is left out of a library.
struct Refusal {
    std::string elementID;
    std::string role;
    std::string reason;
};

/// A library's manifest as far as it can be used.
struct Manifest {
    Manifest() = default;
    Manifest(Manifest&&) noexcept = default; // a copy's `byID` would look into the original
    Manifest& operator=(Manifest&&) noexcept = default;

    std::string id;
    std::string name;
    std::vector<ManifestElement> elements;
    std::unordered_map<std::string_view, std::size_t> byID; ///< where each element stands; looks into `elements`
    std::vector<Refusal> refused;                           ///< elements that were left out
};

/// A manifest of which nothing can be used.
class ManifestError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a manifest; looks at no file. @throws ManifestError
Manifest ReadManifest(std::string_view text);

/// Adds a refusal as long as there are few, and counts the rest in one more: a hostile manifest must not fill memory.
void Refuse(std::vector<Refusal>& refused, Refusal refusal);

} // namespace lumolibmanager::detail
