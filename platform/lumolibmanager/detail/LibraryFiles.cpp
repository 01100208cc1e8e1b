#include <lumolibmanager/detail/LibraryFiles.h>

#include <lumolibmanager/FolderLibManager.h>

#include <orvcore/tasks/ParallelFor.h>
#include <orvcore/text/Printable.h>

// Looks which files of a manifest are there, on all processors: a library of 20,000 elements is as many questions to
// the system and more. A link anywhere below the library's folder costs its element, because it may lead to any file of
// this machine, which a shared library has no business to show.

namespace lumolibmanager::detail {

namespace {

namespace fs = std::filesystem;
using orvcore::FileInfo;
using orvcore::FileKind;

static_assert(kMaxFiles <= 32, "LibraryFiles::present has a bit for each file");

constexpr std::size_t kElementsAPiece = 64;

// What lies at paths below a folder. No link is followed on the way: `Link` is the answer for all that lies behind one.
class Look {
public:
    explicit Look(const fs::path& folder)
        : folder_(orvcore::PathToUTF8(folder / ""))
    {
    }

    FileInfo At(std::string_view relative)
    {
        const std::size_t slash = relative.rfind('/');
        if (slash != relative.npos) {
            const FileKind kind = FolderAt(relative.substr(0, slash));
            if (kind != FileKind::Directory) {
                FileInfo behind;
                behind.kind = kind == FileKind::File ? FileKind::Nothing : kind;
                return behind;
            }
        }
        return Inspect(relative);
    }

private:
    FileInfo Inspect(std::string_view relative) const
    {
        std::error_code error;
        orvcore::UTF8String path = folder_;
        const FileInfo info = orvcore::InspectPath(orvcore::PathFromUTF8(path += orvcore::AsUTF8(relative)), error);
        return error ? FileInfo() : info;
    }

    // Elements beside each other as a rule have their files in one folder.
    FileKind FolderAt(std::string_view relative)
    {
        if (relative != last_) {
            last_ = relative;
            kind_ = FileKind::Directory;
            for (std::size_t end = 0; end != relative.npos && kind_ == FileKind::Directory;) {
                end = relative.find('/', end + 1);
                kind_ = Inspect(relative.substr(0, end)).kind;
            }
        }
        return kind_;
    }

    const orvcore::UTF8String folder_; // with a separator at its end
    std::string last_;
    FileKind kind_ = FileKind::Nothing;
};

std::string Sentence(const ManifestFile& file, FileKind kind)
{
    const std::string which = "the " + file.role + " file \"" + file.path + '"';
    switch (kind) {
    case FileKind::Link:
        return which + " is a link or lies behind one, which could lead out of the library";
    case FileKind::Nothing:
        return which + " is not there yet";
    case FileKind::File:
    case FileKind::Directory:
    case FileKind::Other:
        break;
    }
    return which + " is no file";
}

struct ElementFiles {
    std::uint32_t present = 0;
    LibraryFiles::Facts facts;
    std::vector<Refusal> refused;
};

ElementFiles LookAtElement(Look& look, const ManifestElement& element)
{
    ElementFiles result;
    for (std::size_t i = 0; i < element.files.size(); ++i) {
        const ManifestFile& file = element.files[i];
        const FileInfo info = look.At(file.path);
        if (info.kind == FileKind::File) {
            result.present |= 1U << i;
            if (i == 0) {
                result.facts.primary = info;
            } else if (file.role == kManifestAlternateRole) {
                result.facts.alternate = info;
            }
            continue;
        }
        const bool wholeElement = i == 0 || info.kind == FileKind::Link;
        std::string reason = orvcore::Printable(Sentence(file, info.kind));
        if (wholeElement) {
            return {0, {}, {{element.id, {}, std::move(reason)}}};
        }
        result.refused.push_back({element.id, file.role, std::move(reason)});
    }
    return result;
}

} // namespace

void LookAtFiles(const fs::path& folder, std::span<const ManifestElement> elements, LibraryFiles& files)
{
    const auto fresh = elements.subspan(files.present.size());
    std::vector<ElementFiles> found(fresh.size());
    orvcore::ParallelFor(found.size(), kElementsAPiece, [&](std::size_t first, std::size_t last) {
        Look look(folder);
        for (std::size_t i = first; i < last; ++i) {
            found[i] = LookAtElement(look, fresh[i]);
        }
    });
    files.latest.clear();
    for (ElementFiles& element : found) {
        files.present.push_back(element.present);
        files.latest.push_back(element.facts);
        for (Refusal& refusal : element.refused) {
            Refuse(files.refused, std::move(refusal));
        }
    }
}

} // namespace lumolibmanager::detail
