#include <validation/detail/PackageJudging.h>

#include <validation/TemplateReading.h>
#include <validation/detail/DefinitionJudging.h>
#include <validation/detail/PartChecks.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/WalkTree.h>
#include <orvcore/files/shared/NativeFile.h>
#include <orvcore/json/JSON.h>
#include <orvstorage/shared/EntryName.h>
#include <package/CapsuleZip.h>
#include <package/PackageNames.h>

namespace orvcapsule::detail {

// A package and a folder that is to be packed are judged by the same rules, so both become a list of parts. Of a folder
// what packing would refuse is told in packing's own words (ZipError), before anybody packs it.
//
// The archive goes first. One that cannot be read gives its failure alone: what else might be said of it is guesswork.

namespace fs = std::filesystem;
using orvcore::FileKind;
using orvstorage::ZipError;
using orvstorage::ZipFailure;

namespace {

bool IsPicturesOrFilms(std::u8string_view name)
{
    return name.ends_with(u8".png") || name.ends_with(u8".mp4");
}

// In the form of a failure of packing, so that one text says the same of a folder's file and of an archive's entry.
ZipFailure Refused(ZipError error, const orvcore::UTF8String& name, const std::error_code& reason = {})
{
    return {error, orvstorage::ZipAction::Pack, {}, name, reason ? reason.message() : std::string()};
}

Finding NoDefinition()
{
    Finding finding{Severity::Error, "MissingDefinition", "there is no definition.json in it"};
    finding.expected = "definition.json";
    return finding;
}

// The files of a folder as packing would take them.
class FolderParts {
public:
    FolderParts(const fs::path& folder, FindingList& findings)
        : folder_(folder)
        , findings_(findings)
    {
        orvcore::TreeVisitor visitor;
        visitor.visit = [this](const fs::path& path, FileKind kind) { return Visit(path, kind); };
        visitor.fail = [this](const fs::path& unread, const std::error_code& error) {
            findings_.AddOnce(DescribeFailure(Refused(ZipError::ReadFailed, NameOf(unread), error)));
            return orvcore::WalkNext::GoOn;
        };
        orvcore::WalkTree(folder, visitor);
    }

    const std::vector<Part>& Get() const
    {
        return parts_;
    }

private:
    orvcore::UTF8String NameOf(const fs::path& path) const
    {
        return path == folder_ ? orvcore::UTF8String() : path.lexically_relative(folder_).generic_u8string();
    }

    orvcore::WalkNext Visit(const fs::path& path, FileKind kind)
    {
        // Files that a killed program left half made; packing passes over them, too.
        if (orvcore::IsPrivateName(path.filename())) {
            return orvcore::WalkNext::PassOver;
        }
        if (kind != FileKind::Directory) {
            Take(path, kind);
        }
        // More files than an archive may have are refused by packing anyway. A user may name a folder such as the root
        // of a disk.
        return parts_.size() < orvstorage::ZipLimits().maxEntries ? orvcore::WalkNext::GoOn : orvcore::WalkNext::End;
    }

    void Take(const fs::path& path, FileKind kind)
    {
        Part part{NameOf(path), 0, {}};
        ZipError error = orvstorage::detail::CheckEntryName(part.name).error;
        if (kind != FileKind::File) {
            error = kind == FileKind::Link ? ZipError::SymbolicLink : ZipError::SpecialFile;
        }
        std::error_code unread;
        if (error == ZipError::None) {
            const auto file = orvcore::detail::NativeFile::Open(path, orvcore::detail::NativeFile::Mode::Read, unread);
            part.size = unread ? 0 : file.Size(unread);
            if (!unread && IsPicturesOrFilms(part.name)) {
                part.head.resize(orvstorage::kEntryHeadSize);
                part.head.resize(file.ReadAt(0, part.head.data(), part.head.size(), unread));
            }
            error = unread ? ZipError::ReadFailed : ZipError::None;
        }
        if (error != ZipError::None) {
            findings_.AddOnce(DescribeFailure(Refused(error, part.name, unread)));
        }
        // Also one that cannot be packed: it is there, so it does not count as missing.
        parts_.push_back(std::move(part));
    }

    const fs::path& folder_;
    FindingList& findings_;
    std::vector<Part> parts_;
};

} // namespace

void JudgeDefinitionFile(const fs::path& path, FindingList& findings)
{
    using orvcore::detail::NativeFile;
    std::error_code error;
    const NativeFile file = NativeFile::Open(path, NativeFile::Mode::Read, error);
    const std::uint64_t size = error ? 0 : file.Size(error);
    std::string text(std::min<std::uint64_t>(size, orvcore::serialization::kMaxJSONSize), '\0');
    if (!error) {
        text.resize(file.ReadAt(0, text.data(), text.size(), error));
    }
    if (error == std::errc::no_such_file_or_directory) {
        return findings.AddOnce(NoDefinition());
    }
    // A file that another program writes meanwhile may end early; half of it is not judged.
    if (error || text.size() != size) {
        return findings.AddOnce(
            DescribeFailure(Refused(error ? ZipError::ReadFailed : ZipError::EntryTooLarge, kJSONFileName, error)));
    }
    JudgeDefinition(text, findings);
}

void JudgePackage(const CapsuleZip& package, FindingList& findings)
{
    std::vector<Part> parts;
    for (const orvstorage::ZipEntry& entry : package.GetArchive().GetEntries()) {
        parts.push_back({entry.name, entry.size, {}});
    }
    if (const ZipFailure failure = package.GetLastFailure()) {
        return findings.AddOnce(DescribeFailure(failure));
    }
    // Called while CheckContents has the entry's bytes in hand anyway; the entries' numbers are those of GetEntries
    // above.
    const auto keep = [&parts](std::size_t entry, std::string_view head) {
        if (IsPicturesOrFilms(parts[entry].name)) {
            parts[entry].head = head;
        }
    };
    for (const ZipFailure& failure : package.GetArchive().CheckContents(keep)) {
        findings.AddOnce(DescribeFailure(failure));
    }
    const orvcore::UTF8String text = package.GetZELTDescriptionJSON();
    if (const ZipFailure failure = package.GetLastFailure()) {
        findings.AddOnce(DescribeFailure(failure));
    } else {
        JudgeDefinition(orvcore::AsNarrow(text), findings);
    }
    CheckParts(parts, findings);
}

void JudgeFolder(const fs::path& folder, FindingList& findings)
{
    const FolderParts parts(folder, findings);
    JudgeDefinitionFile(folder / kJSONFileName, findings);
    CheckParts(parts.Get(), findings);
}

} // namespace orvcapsule::detail

namespace orvcapsule {

Finding DescribeFailure(const orvstorage::ZipFailure& failure)
{
    if (failure.error == orvstorage::ZipError::EntryMissing && failure.entry == kJSONFileName) {
        return detail::NoDefinition();
    }
    return {Severity::Error, std::string(orvstorage::NameOf(failure.error)), failure.Reason(), failure.entry};
}

} // namespace orvcapsule
