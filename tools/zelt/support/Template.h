#pragma once

#include <package/CapsuleZip.h>
#include <validation/TemplateReading.h>

#include <string>
#include <vector>

namespace zelt {

/// A package that was opened and read as far as it goes. Nothing here throws for what a package holds.
struct Template {
    std::string file; ///< as the command line names it
    orvcapsule::CapsuleZip package;
    std::vector<orvstorage::ZipEntry> entries;
    orvcapsule::UTF8String text;              ///< "definition.json" as stored; empty when it cannot be had
    orvcapsule::DefinitionReading definition; ///< its refusals tell why there is no capsule, the archive's included

    bool IsGood() const noexcept
    {
        return definition.capsule != nullptr;
    }
};

/// Opens a package and reads its definition.
Template ReadTemplate(const std::string& file);

/// The same for work that needs the definition's text. @throws FileError  when it cannot be had
Template NeedText(const std::string& file);
/// The same for work that needs a capsule. @throws FileError  with the first refusal when there is none
Template NeedCapsule(const std::string& file);

} // namespace zelt
