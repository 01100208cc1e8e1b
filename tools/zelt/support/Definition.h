#pragma once

#include <capsule/Capsule.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zelt {

/// One thing that is wrong with a template.
struct Problem {
    std::string code;                  ///< its kind, for machines: "MissingKey"
    std::string text;                  ///< for people: what is wrong and where
    orvcapsule::UTF8String entry = {}; ///< the archive's entry that is refused or damaged
};
using Problems = std::vector<Problem>;

/// A definition document as far as it can be read.
struct Definition {
    std::shared_ptr<orvcapsule::Capsule> capsule; ///< null when the document is refused
    std::string declaredVersion;                  ///< the document's "apiVersion", also of a refused one
    Problems refusals;                            ///< why there is no capsule
};

/// Reads a definition document and says why it cannot be used, where it cannot.
Definition ReadDefinition(const orvcapsule::UTF8String& text);

/// Everything that is wrong with a definition document, refusals and misfits of its controls.
Problems CheckDefinition(const orvcapsule::UTF8String& text);

} // namespace zelt
