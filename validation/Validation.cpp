#include <validation/Validation.h>

#include <validation/detail/DefinitionJudging.h>
#include <validation/detail/PackageJudging.h>
#include <validation/shared/CannotOpen.h>

#include <orvcore/files/Files.h>
#include <package/CapsuleZip.h>

namespace orvcapsule {

Findings ValidateTemplate(const std::filesystem::path& path, const std::string& password)
{
    detail::FindingList findings;
    try {
        // Any other name is taken for a package: a host asks why a file is not usable, and "it is no archive" is the
        // answer then.
        if (orvcore::IsDirectory(path)) {
            detail::JudgeFolder(path, findings);
        } else if (path.extension() == u8".json") {
            detail::JudgeDefinitionFile(path, findings);
        } else {
            detail::JudgePackage(CapsuleZip(path, password), findings);
        }
    } catch (const std::filesystem::filesystem_error& error) { // no room for the copy of a package with a long path
        findings.Add(detail::CannotOpen(error.code()));
    }
    return findings.Take();
}

Findings ValidatePackage(const CapsuleZip& package)
{
    detail::FindingList findings;
    detail::JudgePackage(package, findings);
    return findings.Take();
}

Findings ValidateDefinition(std::u8string_view text)
{
    detail::FindingList findings;
    detail::JudgeDefinition(orvcore::AsNarrow(text), findings);
    return findings.Take();
}

} // namespace orvcapsule
