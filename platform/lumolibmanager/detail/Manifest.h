#pragma once

#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
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

/// A manifest of which nothing can be used.
class ManifestError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A library's manifest as far as it can be used. Its elements are made as they are asked for: the first ones of many
/// are there as soon as those of few. Any thread.
class Manifest {
public:
    Manifest() = default; // of a library without one
    /// Looks at no file. @throws ManifestError
    explicit Manifest(std::string text);

    const std::string& ID() const noexcept
    {
        return id_;
    }
    const std::string& Name() const noexcept
    {
        return name_;
    }
    /// The first `count` elements, or all when there are no more; they stay where they are.
    std::span<const ManifestElement> First(std::size_t count) const;
    std::span<const ManifestElement> All() const;
    /// Where an element stands in the list of all.
    std::optional<std::size_t> Find(const std::string& elementID) const;
    /// All elements that were left out.
    const std::vector<Refusal>& Refused() const;

private:
    struct Elements;
    std::string id_;
    std::string name_;
    std::shared_ptr<Elements> elements_; ///< null: none
};

/// Adds a refusal as long as there are few, and counts the rest in one more: a hostile manifest must not fill memory.
void Refuse(std::vector<Refusal>& refused, Refusal refusal);

} // namespace lumolibmanager::detail
