#include <package/CapsuleZip.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/files/WalkTree.h>
#include <orvcore/files/shared/CopyDirectory.h>
#include <orvcore/files/shared/NewFolders.h>
#include <orvcore/json/JSON.h>
#include <package/PackageNames.h>
#include <package/detail/EntryInLanguage.h>
#include <package/detail/PackageFile.h>
#include <package/detail/ProjectExtraction.h>

namespace orvcapsule {

// A host reads through the archive that PackageFile chose (the package, or the private copy of one with a long path),
// and changes the package itself through PackageFile::Change. An operation here that wrote to GetArchive() would change
// the copy, which nobody carries back.
//
// No read throws for what a package holds: the host asks GetLastFailure. A second name is tried, and a part counts as
// absent, by that failure alone, so nothing may touch the archive between a read that failed and the question why.

namespace fs = std::filesystem;
using orvcore::UTF16String;
using orvcore::UTF8String;
using orvstorage::ZipError;
using orvstorage::ZipFailure;
using orvstorage::ZipFile;

namespace {

fs::path Absolute(const fs::path& path)
{
    std::error_code error;
    fs::path full = fs::absolute(path, error);
    return error ? path : full;
}

// A relative path may be short and lead to a long place: what counts is the full path that the system gets.
std::unique_ptr<const orvcore::TemporaryFolder> FolderForLongPath(const fs::path& directory)
{
    return detail::FolderForLongPath(orvcore::PathToUTF8(Absolute(directory)));
}

// False where the folder cannot be read: the copy that follows meets the same fault and tells the reason.
bool IsEmpty(const fs::path& folder)
{
    std::error_code error;
    const auto listing = orvcore::ListDirectory(folder, error);
    return !error && listing.directories.empty() && listing.files.empty();
}

bool WriteThumbnail(const ZipFile& zip, std::u8string_view extension, const UTF8String& outputPath,
                    const orvstorage::ZipProgress& progress, void* opaque)
{
    const fs::path output = orvcore::PathFromUTF8(outputPath);
    return detail::ExtractInLanguage(zip, u8"thumb", extension, [&](const UTF8String& entry) {
        return zip.UnzipOver(entry, output, progress, opaque);
    });
}

// On this thread: a caller that is itself a worker must not wait for another.
bool CopyUnzipped(const ZipFile& zip, const fs::path& from, const fs::path& directory, bool overwrite,
                  const std::function<bool(double)>& progress)
{
    // Each piece asks for the time, so that a copy to a drive that has become very slow ends by itself at some time,
    // also for a caller without a progress callback.
    constexpr std::chrono::hours kLongestWait(24);
    const auto end = std::chrono::steady_clock::now() + kLongestWait;
    const auto goesOn = [&](double fraction) { return std::chrono::steady_clock::now() < end && progress(fraction); };
    orvcore::CopyFailure failed;
    const std::int32_t result = orvcore::CopyDirectory(
        from, directory, overwrite ? orvcore::IfExists::Overwrite : orvcore::IfExists::Keep, goesOn, failed);
    if (result >= 0) {
        return true;
    }
    // The host knows the archive only: a failure of the copy is told as one of the unpacking that it asked for.
    constexpr auto kAction = orvstorage::ZipAction::Unpack;
    ZipFailure failure{ZipError::Cancelled, kAction, zip.GetPath(), {}, {}};
    if (result == orvcore::kResultFileNotWritten) {
        // The private folder holds what the entries' names say, so a path below it is the entry's name. An empty path
        // means the target folder itself.
        failure = orvstorage::WriteFailure(failed.error, kAction, zip.GetPath(), failed.path.generic_u8string());
        failure.folder = failed.path.empty() ? directory : fs::path();
    }
    zip.SetLastFailure(failure);
    return false;
}

} // namespace

CapsuleZip::CapsuleZip(const UTF8String& packagePath, const std::string& password)
    : file_(
          std::make_shared<detail::PackageFile>(orvcore::PathFromUTF8(packagePath), packagePath, packagePath, password))
{
}

CapsuleZip::CapsuleZip(const char8_t* packagePath, const std::string& password)
    : CapsuleZip(UTF8String(packagePath), password)
{
}

CapsuleZip::CapsuleZip(const fs::path& package, const std::string& password)
    : file_(std::make_shared<detail::PackageFile>(package, orvcore::PathToUTF8(package),
                                                  orvcore::PathToUTF8(Absolute(package)), password))
{
}

// Defined here and not in the header, so that no host's code contains them: what an object owns may change without a
// new build of the host.
CapsuleZip::CapsuleZip(const CapsuleZip& other) = default;
CapsuleZip& CapsuleZip::operator=(const CapsuleZip& other) = default;
CapsuleZip::CapsuleZip(CapsuleZip&& other) noexcept = default;
CapsuleZip& CapsuleZip::operator=(CapsuleZip&& other) noexcept = default;
CapsuleZip::~CapsuleZip() = default;

UTF8String CapsuleZip::GetZELTDescriptionJSON() const
{
    // The limit is the readers' own: a larger text would be unpacked for nothing, since no parser here takes it.
    return GetArchive().UnzipText(kJSONFileName, orvcore::serialization::kMaxJSONSize).value_or(UTF8String());
}

bool CapsuleZip::SetZELTDescriptionJSON(const UTF16String& directory)
{
    return SetZELTDescriptionJSON(directory, {}, nullptr);
}

bool CapsuleZip::SetZELTDescriptionJSON(const UTF16String& directory, const orvstorage::ZipProgress& progress,
                                        void* opaque)
{
    return file_->Change([&](const ZipFile& package) {
        return package.AddItem(kJSONFileName, orvcore::PathFromUTF16(directory), true, progress, opaque);
    });
}

bool CapsuleZip::PutEntry(std::u8string_view name, const fs::path& file)
{
    return file_->Change([&](const ZipFile& package) { return package.AddFile(name, file, true); });
}

bool CapsuleZip::RemoveEntry(std::u8string_view name)
{
    return file_->Change([&](const ZipFile& package) { return package.RemoveItem(name); });
}

bool CapsuleZip::SetZELTDescriptionJSON(const UTF8String& text)
{
    // The archive takes the text from a file of the entry's name. The folder is removed at the end of this call, and a
    // folder that a killed process left is removed when another one is made a day later.
    const orvcore::TemporaryFolder folder(detail::kPrivateArea);
    orvcore::WriteBufferToFile(folder.Path() / kJSONFileName, text.data(), text.size());
    return SetZELTDescriptionJSON(orvcore::PathToUTF16(folder.Path()));
}

void CapsuleZip::Reopen()
{
    file_->Reopen();
}

bool CapsuleZip::GetZELTThumbnailPNG(const UTF8String& outputPath) const
{
    return GetZELTThumbnailPNG(outputPath, {}, nullptr);
}

bool CapsuleZip::GetZELTThumbnailPNG(const UTF8String& outputPath, const orvstorage::ZipProgress& progress,
                                     void* opaque) const
{
    return WriteThumbnail(GetArchive(), u8".png", outputPath, progress, opaque);
}

bool CapsuleZip::GetZELTThumbnailVideo(const UTF8String& outputPath) const
{
    return GetZELTThumbnailVideo(outputPath, {}, nullptr);
}

bool CapsuleZip::GetZELTThumbnailVideo(const UTF8String& outputPath, const orvstorage::ZipProgress& progress,
                                       void* opaque) const
{
    return WriteThumbnail(GetArchive(), u8".mp4", outputPath, progress, opaque);
}

bool CapsuleZip::GetZELTMediaThumbnailPNG(const UTF8String& name, const UTF8String& outputPath) const
{
    return GetArchive().UnzipOver(u8"Thumbnails/" + name, orvcore::PathFromUTF8(outputPath));
}

bool CapsuleZip::GetZELTProjectPackage(const UTF16String& baseDirectory, const UTF16String& subDirectory,
                                       const UTF16String& projectName, UTF16String& outProjectPath) const
{
    return GetZELTProjectPackage(baseDirectory, subDirectory, projectName, outProjectPath, {}, nullptr);
}

bool CapsuleZip::GetZELTProjectPackage(const UTF16String& baseDirectory, const UTF16String& subDirectory,
                                       const UTF16String& projectName, UTF16String& outProjectPath,
                                       const orvstorage::ZipProgress& progress, void* opaque) const
{
    const ZipFile& zip = GetArchive();
    const fs::path base = orvcore::PathFromUTF16(baseDirectory);
    const fs::path sub = orvcore::PathFromUTF16(subDirectory);
    // Beside a base, an absolute sub-directory would take the base's place.
    const fs::path directory = base.empty() ? sub : base / sub.relative_path();
    const auto privateFolder = FolderForLongPath(directory);
    const fs::path& unpackDirectory = privateFolder ? privateFolder->Path() : directory;
    const auto file = detail::ExtractProject(zip, unpackDirectory, projectName, progress, opaque);
    const auto always = [](double) { return true; };
    // The folder is made only when the project is there to be put in, and taken away again (by this object's
    // destructor) when the copy fails: CopyDirectory removes only what it has made itself.
    orvcore::detail::NewFolders folders;
    if (file && privateFolder) {
        std::error_code ignored; // the copy meets the same obstacle and tells it
        folders.Make(directory, ignored);
    }
    if (!file || (privateFolder && !CopyUnzipped(zip, privateFolder->Path(), directory, true, always))) {
        return false;
    }
    folders.Keep();
    outProjectPath = orvcore::PathToUTF16(directory / *file);
    return true;
}

bool CapsuleZip::UnZip(const fs::path& directory, bool overwrite) const
{
    return UnZip(directory, overwrite, {}, nullptr);
}

bool CapsuleZip::UnZip(const fs::path& directory, bool overwrite, const orvstorage::ZipProgress& progress,
                       void* opaque) const
{
    const ZipFile& zip = GetArchive();
    const auto privateFolder = FolderForLongPath(directory);
    if (!privateFolder) {
        return zip.UnZip(directory, overwrite, progress, opaque);
    }
    // Unpacking is one half of the work, copying the other.
    const auto ask = [&](double fraction) { return !progress || progress(fraction, opaque); };
    const bool unzipped = zip.UnZip(
        privateFolder->Path(), true, [&](double fraction, void*) { return ask(fraction / 2); }, nullptr);
    // What was refused is missing in the private folder; what was not is wanted even so.
    if (!unzipped && IsEmpty(privateFolder->Path())) {
        return false;
    }
    const auto askAgain = [&](double fraction) { return ask((1 + fraction) / 2); };
    return CopyUnzipped(zip, privateFolder->Path(), directory, overwrite, askAgain) && unzipped;
}

bool CapsuleZip::Zip(const fs::path& directory, const std::function<bool(double, void*)>& progress, void* opaque) const
{
    return file_->Change([&](const ZipFile& package) { return package.Zip(directory, progress, opaque); });
}

std::optional<std::vector<UTF16String>> CapsuleZip::GetPathOfUnZippedProject(const char* extension,
                                                                             const UTF16String& directory)
{
    const fs::path wanted = orvcore::PathFromUTF8(u8"." + orvcore::ToUTF8(extension != nullptr ? extension : ""));
    std::vector<UTF16String> found;
    orvcore::TreeVisitor visitor;
    visitor.visit = [&](const fs::path& path, orvcore::FileKind kind) {
        // A link to a folder is not entered and counts as a folder: it may lead to a place above, whose files are not
        // the project's.
        const bool isFile =
            kind != orvcore::FileKind::Directory && !(kind == orvcore::FileKind::Link && orvcore::IsDirectory(path));
        if (isFile && path.extension() == wanted) {
            found.push_back(orvcore::PathToUTF16(path));
        }
        return orvcore::WalkNext::GoOn;
    };
    // A folder that cannot be read holds nothing that can be opened.
    visitor.fail = [](const fs::path&, const std::error_code&) { return orvcore::WalkNext::GoOn; };
    orvcore::WalkTree(Absolute(orvcore::PathFromUTF16(directory)), visitor);
    return found.empty() ? std::nullopt : std::optional(std::move(found));
}

const UTF8String& CapsuleZip::GetPackagePath() const noexcept
{
    return file_->PackagePath();
}

const UTF8String& CapsuleZip::GetWorkingPath() const noexcept
{
    return file_->WorkingPath();
}

ZipFile& CapsuleZip::GetArchive() noexcept
{
    return file_->Archive();
}

const ZipFile& CapsuleZip::GetArchive() const noexcept
{
    return file_->Archive();
}

ZipFailure CapsuleZip::GetLastFailure() const
{
    ZipFailure failure = GetArchive().GetLastFailure();
    // A private copy has a path that tells the host nothing.
    failure.archive = orvcore::PathFromUTF8(GetPackagePath());
    return failure;
}

} // namespace orvcapsule
