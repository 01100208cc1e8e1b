#pragma once

#include <capsule/Capsule.h>
#include <orvstorage/ZipFailure.h>
#include <validation/Finding.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace orvcapsule {

class CapsuleZip;

/// A definition as far as it can be read: the record, or why there is none.
struct DefinitionReading {
    std::shared_ptr<Capsule> capsule; ///< null when the definition is refused
    std::vector<Finding> refusals;    ///< why, at least one error then; empty when there is a record
    std::string declaredVersion;      ///< the document's "apiVersion", also of a refused one; empty when it names none

    explicit operator bool() const noexcept
    {
        return capsule != nullptr;
    }
};

/// A package's definition with the text that it was read from.
struct TemplateReading : DefinitionReading {
    UTF8String text; ///< "definition.json" as it is stored; empty when it cannot be had
};

/// @name Reading a template in one call
/// The record of the template, or the reason in words. What is only odd is not told; see Validation.h. Thread-safe;
/// nothing is thrown but `std::bad_alloc`.
/// @{
ORVCAPSULE_API TemplateReading ReadTemplate(const std::filesystem::path& package, const std::string& password = {});
/// Reads an open package, which one thread at a time uses. Its last failure is that of reading the definition's text.
ORVCAPSULE_API TemplateReading ReadTemplate(const CapsuleZip& package);
/// Reads the text of a definition document.
ORVCAPSULE_API DefinitionReading ReadDefinition(const UTF8String& text);
/// @}

/// An archive's failure as a finding. Any thread.
ORVCAPSULE_API Finding DescribeFailure(const orvstorage::ZipFailure& failure);

} // namespace orvcapsule
