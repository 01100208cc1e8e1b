#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>
#include <tools/zelt/support/OpenPackage.h>
#include <tools/zelt/support/OutputFile.h>
#include <tools/zelt/support/Parts.h>
#include <tools/zelt/support/TempFolder.h>
#include <tools/zelt/support/Template.h>

#include <orvcore/files/Files.h>
#include <orvcore/host/Application.h>
#include <package/PackageNames.h>

namespace zelt {

namespace {

namespace fs = std::filesystem;
using orvcapsule::CapsuleZip;

// What a package gave: the file, and one that belongs beside it.
struct Extracted {
    fs::path file;
    std::optional<fs::path> sideFile;
};

constexpr std::u8string_view kSideFile = u8"ZeltOptimizations.bin";

std::optional<Extracted> ExtractPoster(const CapsuleZip& package, const fs::path& folder,
                                       const orvstorage::ZipProgress& report)
{
    const fs::path file = folder / orvcapsule::kThumbFileName;
    return package.GetZELTThumbnailPNG(orvcore::PathToUTF8(file), report, nullptr) ? std::optional(Extracted{file, {}})
                                                                                   : std::nullopt;
}

std::optional<Extracted> ExtractVideo(const CapsuleZip& package, const fs::path& folder,
                                      const orvstorage::ZipProgress& report)
{
    const fs::path file = folder / orvcapsule::kVideoThumbFileName;
    return package.GetZELTThumbnailVideo(orvcore::PathToUTF8(file), report, nullptr)
               ? std::optional(Extracted{file, {}})
               : std::nullopt;
}

std::optional<Extracted> ExtractProject(const CapsuleZip& package, const fs::path& folder,
                                        const orvstorage::ZipProgress& report)
{
    orvcapsule::UTF16String path;
    if (!package.GetZELTProjectPackage(orvcore::PathToUTF16(folder), u"", u"project", path, report, nullptr)) {
        return std::nullopt;
    }
    Extracted extracted{orvcore::PathFromUTF16(path), {}};
    if (orvcore::IsFile(folder / kSideFile)) {
        extracted.sideFile = folder / kSideFile;
    }
    return extracted;
}

std::optional<Extracted> ExtractEntry(const CapsuleZip& package, const std::string& name, const fs::path& folder,
                                      const orvstorage::ZipProgress& report)
{
    // Only the last part of the name is used; the archive class has refused what is no file name.
    const fs::path file = folder / ToPath(name).filename();
    return file.has_filename() && package.GetArchive().UnzipItems(orvcore::AsUTF8(name), file, report, nullptr)
               ? std::optional(Extracted{file, {}})
               : std::nullopt;
}

std::optional<Extracted> Extract(const CapsuleZip& package, const std::string& what, const fs::path& folder,
                                 const orvstorage::ZipProgress& report)
{
    switch (PartOf(what)) {
    case Part::Poster:
        return ExtractPoster(package, folder, report);
    case Part::Video:
        return ExtractVideo(package, folder, report);
    case Part::Project:
        return ExtractProject(package, folder, report);
    case Part::Entry:
        break;
    }
    return ExtractEntry(package, what, folder, report);
}

// Why there is nothing: the archive's own reason where it is not just that there is no such entry.
std::string Missing(const CapsuleZip& package, const std::string& what)
{
    const orvstorage::ZipFailure failure = package.GetLastFailure();
    const bool isRole = PartOf(what) != Part::Entry;
    const bool isAbsent = !failure || failure.error == orvstorage::ZipError::EntryMissing;
    return isAbsent ? (isRole ? "there is no " + what + " in it" : "there is no entry \"" + what + "\" in it")
                    : failure.Reason();
}

Extracted NeedExtracted(const ExtractOptions& options, const fs::path& folder, const InterruptWatch& interrupt)
{
    Progress progress("extracting");
    const CapsuleZip package = OpenPackage(ToPath(options.file));
    auto extracted = Extract(package, options.what, folder, ShowAndWatch{progress, &interrupt});
    if (!extracted) {
        interrupt.Check();
        throw FileError(options.file, Missing(package, options.what));
    }
    return std::move(*extracted);
}

void Deliver(const Extracted& extracted, const ExtractOptions& options, const InterruptWatch& interrupt)
{
    if (options.output == "-") {
        if (!PrintFile(extracted.file)) {
            throw FileError("-", "it cannot be written");
        }
        return;
    }
    fs::path output = ToPath(options.output);
    if (orvcore::IsDirectory(output) || !output.has_filename()) {
        output /= extracted.file.filename();
    }
    Deliver(extracted.file, output, options.form, &interrupt);
    if (extracted.sideFile) { // a small one: what belongs to it is there already
        Deliver(*extracted.sideFile, output.parent_path() / kSideFile, options.form, nullptr);
    }
}

} // namespace

// Extracted to a folder of the program's own and then put in place: the library writes a preview over the file that
// stands there, and a failure would cost the user that file.
ExitCode RunExtract(const ExtractOptions& options)
{
    return OnFile(options.file, [&] {
        const InterruptWatch interrupt;
        const TempFolder folder;
        Deliver(NeedExtracted(options, folder.Path(), interrupt), options, interrupt);
    });
}

} // namespace zelt
