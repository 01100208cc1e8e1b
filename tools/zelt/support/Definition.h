#pragma once

#include <tools/zelt/output/Problems.h>

#include <capsule/Capsule.h>

#include <memory>
#include <string>

namespace zelt {

/// A definition document as far as it can be read.
struct Definition {
    std::shared_ptr<orvcapsule::Capsule> capsule; ///< null when the document is refused
    std::string declaredVersion;                  ///< the document's "apiVersion", also of a refused one
    Problems refusals;                            ///< why there is no capsule
};

/// Reads a definition document and says why it cannot be used, where it cannot.
Definition ReadDefinition(const orvcapsule::UTF8String& text);

/// Adds everything that is wrong with a definition document, refusals and misfits of its controls.
void CheckDefinition(const orvcapsule::UTF8String& text, Problems& problems);

} // namespace zelt
