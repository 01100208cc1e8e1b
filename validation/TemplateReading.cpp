#include <validation/TemplateReading.h>

#include <validation/detail/DefinitionJudging.h>
#include <validation/detail/PackageJudging.h>
#include <validation/shared/CannotOpen.h>

#include <capsule/Serialization.h>
#include <package/CapsuleZip.h>
#include <package/PackageNames.h>

#include <algorithm>

namespace orvcapsule {

TemplateReading ReadTemplate(const std::filesystem::path& package, const std::string& password)
{
    try {
        return ReadTemplate(CapsuleZip(package, password));
    } catch (const std::filesystem::filesystem_error& error) { // no room for the copy of a package with a long path
        TemplateReading none;
        none.refusals.push_back(detail::CannotOpen(error.code()));
        return none;
    }
}

TemplateReading ReadTemplate(const CapsuleZip& package)
{
    TemplateReading reading;
    reading.text = package.GetZELTDescriptionJSON();
    // Asked right after the read: the failure belongs to the last operation. An empty text without a failure is an
    // empty entry, which the reader judges like any other text.
    if (const orvstorage::ZipFailure failure = package.GetLastFailure()) {
        reading.refusals.push_back(DescribeFailure(failure));
    } else {
        static_cast<DefinitionReading&>(reading) = ReadDefinition(reading.text);
    }
    return reading;
}

// A good definition is parsed once. A refused one is parsed several times more, to find the reason and its place; that
// is paid by broken templates only.
//
// Callers take the first refusal for the reason, so a reading without a record always has one.
DefinitionReading ReadDefinition(const UTF8String& text)
{
    DefinitionReading reading;
    std::string lacking;
    try {
        reading.capsule = serialization::CapsuleFromJson(text);
        if (reading.capsule != nullptr && !reading.capsule->GetAPIVersion().empty()) {
            reading.declaredVersion = reading.capsule->GetAPIVersion();
            return reading;
        }
    } catch (const orvcore::serialization::missing_key_exception& error) { // where it is, is told below
        lacking = error.GetKey();
    }
    reading.capsule = nullptr;
    reading.declaredVersion = detail::DeclaredVersion(orvcore::AsNarrow(text));
    detail::FindingList findings;
    detail::JudgeDefinition(orvcore::AsNarrow(text), findings);
    reading.refusals = findings.Take().list;
    std::erase_if(reading.refusals, [](const Finding& finding) { return !detail::IsRefusal(finding.code); });
    if (reading.refusals.empty()) { // it comes after as many other errors as are kept
        reading.refusals.push_back({Severity::Error, "MissingKey",
                                    "the value of " + detail::Quoted(lacking) + " is missing or cannot be used",
                                    kJSONFileName});
    }
    return reading;
}

} // namespace orvcapsule
