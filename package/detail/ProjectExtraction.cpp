#include <package/detail/ProjectExtraction.h>

#include <orvcore/files/Paths.h>
#include <package/detail/EntryInLanguage.h>

namespace orvcapsule::detail {

namespace fs = std::filesystem;

namespace {

constexpr std::u8string_view kCorvidExtension = u8".cvgraphic";
constexpr std::u8string_view kTesselExtension = u8".tsgraphic";

// The entries of a project are extracted one after the other from one archive, under one caller's progress.
struct Extraction {
    const orvstorage::ZipFile& zip;
    const fs::path& directory;
    const orvstorage::ZipProgress& progress;
    void* opaque;

    bool Extract(std::u8string_view entry, const fs::path& fileName) const
    {
        return zip.UnzipItems(entry, directory / fileName, progress, opaque);
    }

    bool ExtractProject(std::u8string_view extension, const fs::path& fileName) const
    {
        return ExtractInLanguage(zip, u8"project", extension,
                                 [&](const orvcore::UTF8String& entry) { return Extract(entry, fileName); });
    }

    // Without its side file a project is slower, but whole: the result is true, and the last failure tells.
    void ExtractSideFile() const
    {
        constexpr std::u8string_view kSideFile = u8"ZeltOptimizations.bin";
        if (zip.Contains(kSideFile)) {
            Extract(kSideFile, kSideFile);
        }
    }
};

} // namespace

std::optional<fs::path> ExtractProject(const orvstorage::ZipFile& zip, const fs::path& directory,
                                       const orvcore::UTF16String& name, const orvstorage::ZipProgress& progress,
                                       void* opaque)
{
    const Extraction extraction{zip, directory, progress, opaque};
    const auto fileName = [&name](std::u8string_view extension) {
        return orvcore::PathFromUTF16(name + orvcore::ToUTF16(extension));
    };
    if (extraction.ExtractProject(kCorvidExtension, fileName(kCorvidExtension))) {
        return fileName(kCorvidExtension);
    }
    if (!WasMissing(zip) || !extraction.ExtractProject(kTesselExtension, fileName(kTesselExtension))) {
        return std::nullopt;
    }
    extraction.ExtractSideFile();
    return fileName(kTesselExtension);
}

} // namespace orvcapsule::detail
