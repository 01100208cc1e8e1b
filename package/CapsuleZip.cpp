#include <package/CapsuleZip.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/shared/CopyDirectory.h>
#include <orvcore/host/Application.h>
#include <package/PackageNames.h>
#include <package/detail/ShortPath.h>

namespace orvcapsule {

namespace fs = std::filesystem;
using orvcore::UTF16String;
using orvcore::UTF8String;

namespace {

UTF8String Localized(std::u8string_view stem, std::u8string_view extension)
{
    UTF8String name(stem);
    name += u8'_';
    name += orvcore::AsUTF8(orvcore::Application::GetLanguage());
    name += extension;
    return name;
}

UTF8String Joined(std::u8string_view stem, std::u8string_view extension)
{
    UTF8String name(stem);
    name += extension;
    return name;
}

UTF8String FullPath(const fs::path& path)
{
    std::error_code error;
    const fs::path full = fs::absolute(path, error);
    return orvcore::PathToUTF8(error ? path : full);
}

bool IsEmpty(const fs::path& folder)
{
    const auto listing = orvcore::ListDirectory(folder);
    return listing.directories.empty() && listing.files.empty();
}

} // namespace

CapsuleZip::CapsuleZip(const UTF8String& packagePath, const std::string& password)
    : packagePath_(packagePath)
    , workingPath_(packagePath)
    , zip_(orvcore::PathFromUTF8(packagePath), password)
{
    MoveToShortPath(orvcore::PathFromUTF8(packagePath), packagePath, password);
}

CapsuleZip::CapsuleZip(const char8_t* packagePath, const std::string& password)
    : CapsuleZip(UTF8String(packagePath), password)
{
}

CapsuleZip::CapsuleZip(const fs::path& package, const std::string& password)
    : packagePath_(orvcore::PathToUTF8(package))
    , workingPath_(packagePath_)
    , zip_(package, password)
{
    MoveToShortPath(package, FullPath(package), password);
}

CapsuleZip::CapsuleZip(const CapsuleZip& other) = default;
CapsuleZip& CapsuleZip::operator=(const CapsuleZip& other) = default;
CapsuleZip::CapsuleZip(CapsuleZip&& other) noexcept = default;
CapsuleZip& CapsuleZip::operator=(CapsuleZip&& other) noexcept = default;
CapsuleZip::~CapsuleZip() = default;

void CapsuleZip::MoveToShortPath(const fs::path& package, const UTF8String& fullPath, const std::string& password)
{
    if (!detail::IsLongPath(fullPath) || !orvcore::Exists(package)) {
        return;
    }
    privateCopy_ = detail::FolderForLongPath(fullPath);
    const fs::path copy = privateCopy_->Path() / package.filename();
    orvcore::CopyOneFile(package, copy);
    workingPath_ = orvcore::PathToUTF8(copy);
    zip_ = orvstorage::ZipFile(copy, password);
}

UTF8String CapsuleZip::GetZELTDescriptionJSON() const
{
    return zip_.UnzipText(kJSONFileName).value_or(UTF8String());
}

bool CapsuleZip::SetZELTDescriptionJSON(const UTF16String& directory)
{
    return zip_.AddItem(kJSONFileName, orvcore::PathFromUTF16(directory), true) && CopyBack();
}

// A change of the private copy is a change of the package.
bool CapsuleZip::CopyBack() const
{
    if (privateCopy_) {
        orvcore::CopyOneFile(orvcore::PathFromUTF8(workingPath_), orvcore::PathFromUTF8(packagePath_),
                             orvcore::Durability::OnDisk);
    }
    return true;
}

bool CapsuleZip::WriteEntry(std::u8string_view entry, const UTF8String& outputPath, bool& found) const
{
    const orvstorage::ZipBuffer content = zip_.UnzipItem(entry);
    found = content && !content->empty();
    return found &&
           orvcore::WriteBufferToFile(orvcore::PathFromUTF8(outputPath), content->data(), content->size()) >= 0;
}

bool CapsuleZip::WriteLocalized(std::u8string_view stem, std::u8string_view extension,
                                const UTF8String& outputPath) const
{
    bool found = false;
    const bool written = WriteEntry(Localized(stem, extension), outputPath, found);
    return found ? written : WriteEntry(Joined(stem, extension), outputPath, found);
}

bool CapsuleZip::GetZELTThumbnailPNG(const UTF8String& outputPath) const
{
    return WriteLocalized(u8"thumb", u8".png", outputPath);
}

bool CapsuleZip::GetZELTThumbnailVideo(const UTF8String& outputPath) const
{
    return WriteLocalized(u8"thumb", u8".mp4", outputPath);
}

bool CapsuleZip::GetZELTMediaThumbnailPNG(const UTF8String& name, const UTF8String& outputPath) const
{
    bool found = false;
    return WriteEntry(u8"Thumbnails/" + name, outputPath, found);
}

bool CapsuleZip::ExtractProject(const fs::path& directory, const UTF16String& name, std::u8string_view extension,
                                UTF16String& outProjectPath) const
{
    const fs::path fileName = orvcore::PathFromUTF16(name + orvcore::ToUTF16(extension));
    const auto privateFolder = detail::FolderForLongPath(orvcore::PathToUTF8(directory));
    const fs::path& unpackDirectory = privateFolder ? privateFolder->Path() : directory;
    const fs::path destination = unpackDirectory / fileName;
    if (!zip_.UnzipItems(Localized(u8"project", extension), destination) &&
        !zip_.UnzipItems(Joined(u8"project", extension), destination)) {
        return false;
    }
    const fs::path target = directory / fileName;
    if (privateFolder) {
        orvcore::EnsureDirectory(directory);
        orvcore::CopyOneFile(destination, target);
    }
    outProjectPath = orvcore::PathToUTF16(target);
    constexpr std::u8string_view kSideFile = u8"ZeltOptimizations.bin";
    if (extension == u8".tsgraphic" && zip_.Contains(kSideFile) &&
        zip_.UnzipItems(kSideFile, unpackDirectory / kSideFile) && privateFolder) {
        orvcore::CopyOneFile(unpackDirectory / kSideFile, directory / kSideFile);
    }
    return true;
}

bool CapsuleZip::GetZELTProjectPackage(const UTF16String& baseDirectory, const UTF16String& subDirectory,
                                       const UTF16String& projectName, UTF16String& outProjectPath) const
{
    // An absolute sub-directory would otherwise take the base's place.
    const fs::path directory =
        orvcore::PathFromUTF16(baseDirectory) / orvcore::PathFromUTF16(subDirectory).relative_path();
    return ExtractProject(directory, projectName, u8".cvgraphic", outProjectPath) ||
           ExtractProject(directory, projectName, u8".tsgraphic", outProjectPath);
}

bool CapsuleZip::UnZip(const fs::path& directory, bool overwrite) const
{
    const auto privateFolder = detail::FolderForLongPath(FullPath(directory));
    if (!privateFolder) {
        return zip_.UnZip(directory, overwrite);
    }
    const bool unzipped = zip_.UnZip(privateFolder->Path(), true);
    // What was refused is missing in the private folder; what was not is wanted even so.
    if (!unzipped && IsEmpty(privateFolder->Path())) {
        return false;
    }
    return CopyUnzipped(privateFolder->Path(), directory, overwrite) && unzipped;
}

bool CapsuleZip::CopyUnzipped(const fs::path& from, const fs::path& directory, bool overwrite) const
{
    constexpr std::chrono::hours kLongestWait(24);
    const auto failed = std::make_shared<orvcore::CopyFailure>();
    const auto copy = orvcore::CopyDirectoryAsync(
        from, directory, overwrite ? orvcore::IfExists::Overwrite : orvcore::IfExists::Keep,
        [](double) { return true; }, failed);
    const std::int32_t result = orvcore::WaitForResultCode(copy, kLongestWait);
    if (result >= 0) {
        return true;
    }
    using orvstorage::ZipError;
    orvstorage::ZipFailure failure{ZipError::Cancelled, orvstorage::ZipAction::Unpack, zip_.GetPath(), {}, {}};
    if (result == orvcore::kResultFileNotWritten) {
        failure.entry = failed->path.generic_u8string();
        failure.folder = failed->path.empty() ? directory : fs::path();
        orvstorage::TranslateWriteError(failed->error, failure);
    }
    zip_.SetLastFailure(failure);
    return false;
}

bool CapsuleZip::Zip(const fs::path& directory, const std::function<bool(double, void*)>& progress, void* opaque) const
{
    return zip_.Zip(directory, progress, opaque) && CopyBack();
}

std::optional<std::vector<UTF16String>> CapsuleZip::GetPathOfUnZippedProject(const char* extension,
                                                                             const UTF16String& directory)
{
    const fs::path wanted = orvcore::PathFromUTF8(u8"." + orvcore::ToUTF8(extension != nullptr ? extension : ""));
    std::vector<UTF16String> found;
    orvcore::WalkFiles(orvcore::PathFromUTF16(directory), [&](const fs::path& file) {
        if (file.extension() == wanted) {
            found.push_back(orvcore::PathToUTF16(file));
        }
        return true;
    });
    return found.empty() ? std::nullopt : std::optional(std::move(found));
}

const UTF8String& CapsuleZip::GetPackagePath() const noexcept
{
    return packagePath_;
}

const UTF8String& CapsuleZip::GetWorkingPath() const noexcept
{
    return workingPath_;
}

orvstorage::ZipFile& CapsuleZip::GetArchive() noexcept
{
    return zip_;
}

const orvstorage::ZipFile& CapsuleZip::GetArchive() const noexcept
{
    return zip_;
}

orvstorage::ZipFailure CapsuleZip::GetLastFailure() const
{
    orvstorage::ZipFailure failure = zip_.GetLastFailure();
    failure.archive = orvcore::PathFromUTF8(packagePath_);
    return failure;
}

} // namespace orvcapsule
