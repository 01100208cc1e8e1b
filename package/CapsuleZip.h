#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>
#include <orvstorage/ZipFile.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvcapsule {

namespace detail {
class PackageFile;
}

/// A template package (".zelt") on disk: reads and writes its definition document, extracts its pictures and host
/// projects, unpacks and packs it.
///
/// A package whose path is longer than 220 UTF-8 bytes is read through a private copy under the temporary folder. The
/// copy is deleted with the last object that uses it. Changes are made in the package itself.
///
/// The constructor accepts a missing or damaged package: every read then returns false or nothing, and GetLastFailure
/// tells why. The language of localised entries is the application's at the time of the call. Several reads open the
/// package once. One thread at a time uses an object and its copies; objects made separately may be used in parallel.
/// Only two things throw: the creation of a private folder or copy (`std::filesystem::filesystem_error`), and a
/// caller's own callback.
class ORVCAPSULE_API CapsuleZip {
public:
    /// @param packagePath the package's path; it need not exist
    /// @param password the archive's password; empty: none
    explicit CapsuleZip(const orvcore::UTF8String& packagePath, const std::string& password = {});
    explicit CapsuleZip(const char8_t* packagePath, const std::string& password = {});
    explicit CapsuleZip(const std::filesystem::path& package, const std::string& password = {});
    /// Copies share the open archive and the private copy, if there is one.
    CapsuleZip(const CapsuleZip& other);
    CapsuleZip& operator=(const CapsuleZip& other);
    /// A moved-from object may only be assigned to or destroyed.
    CapsuleZip(CapsuleZip&& other) noexcept;
    CapsuleZip& operator=(CapsuleZip&& other) noexcept;
    ~CapsuleZip();

    /// @name The definition document
    /// @{
    /// The text of "definition.json" as it is stored; empty when there is none, or one larger than readers take
    /// (`orvcore::serialization::kMaxJSONSize`).
    orvcore::UTF8String GetZELTDescriptionJSON() const;
    /// Stores the file "definition.json" of `directory` in the package, in the place of the old one. Every other entry
    /// keeps its bytes; the old package is whole until the new one is complete.
    ///
    /// A change by another program is never overwritten: if the package is no longer the version that this object last
    /// read or wrote, nothing is stored and the failure is `ZipError::ArchiveChanged`. Then call Reopen, read the
    /// definition again and repeat the change. A package that this object has not read yet is changed as it is.
    [[nodiscard]] bool SetZELTDescriptionJSON(const orvcore::UTF16String& directory);
    /// As above, with progress and cancellation.
    /// @param progress, opaque see orvstorage::ZipFile::AddItem
    [[nodiscard]] bool SetZELTDescriptionJSON(const orvcore::UTF16String& directory,
                                              const orvstorage::ZipProgress& progress, void* opaque);
    /// The same with the definition's text. It is stored as it is: nothing is judged. Throws
    /// `std::filesystem::filesystem_error` when the private folder on the way cannot be made or written.
    [[nodiscard]] bool SetZELTDescriptionJSON(const orvcore::UTF8String& text);
    /// Forgets what has been read: from now on this object and its copies read the package as it is now, and changes
    /// build on that. Throws as the constructor does; the package can be used after that.
    void Reopen();
    /// @}

    /// @name Single entries
    /// The package is changed as SetZELTDescriptionJSON changes it: other entries keep their bytes, the old package is
    /// whole until the new one is complete, and a change by another program makes the call fail.
    /// @{
    /// Stores `file` under the entry's name, in the place of an entry of that name or as a new one. What its content is
    /// good for is not looked at.
    [[nodiscard]] bool PutEntry(std::u8string_view name, const std::filesystem::path& file);
    /// Removes the entry of exactly this name; the only one cannot be removed.
    [[nodiscard]] bool RemoveEntry(std::u8string_view name);
    /// @}

    /// @name Pictures and videos
    /// Each writes one file and returns whether it did; see orvstorage::ZipFile::UnzipOver. The second name is tried
    /// when the first entry is missing or empty, but not when it cannot be read. The output's folder must exist; a file
    /// at the path is overwritten.
    /// @{
    /// The poster: "thumb_<language>.png", else "thumb.png".
    bool GetZELTThumbnailPNG(const orvcore::UTF8String& outputPath) const;
    bool GetZELTThumbnailPNG(const orvcore::UTF8String& outputPath, const orvstorage::ZipProgress& progress,
                             void* opaque) const;
    /// The preview video: "thumb_<language>.mp4", else "thumb.mp4".
    bool GetZELTThumbnailVideo(const orvcore::UTF8String& outputPath) const;
    bool GetZELTThumbnailVideo(const orvcore::UTF8String& outputPath, const orvstorage::ZipProgress& progress,
                               void* opaque) const;
    /// A medium's picture: "Thumbnails/" followed by exactly `name`.
    bool GetZELTMediaThumbnailPNG(const orvcore::UTF8String& name, const orvcore::UTF8String& outputPath) const;
    /// @}

    /// Extracts the host project: a Corvid one when the package has it ("project_<language>.cvgraphic", else
    /// "project.cvgraphic"), otherwise a Tessel one, by the same names with ".tsgraphic", together with
    /// "ZeltOptimizations.bin" beside it when present. A name is tried only when there is no entry of the name before
    /// it; an entry that exists and cannot be extracted makes the call fail. If only the side file cannot be extracted,
    /// the result is true and GetLastFailure tells why.
    /// @param baseDirectory, subDirectory  together the project's folder, which is created when missing and removed
    ///        again after a failure. Without a base the folder is the sub-directory; with a base it lies below the
    ///        base, even if `subDirectory` is absolute.
    /// @param projectName the project file's name without extension
    /// @param outProjectPath receives the project file's path; left alone when the result is false
    bool GetZELTProjectPackage(const orvcore::UTF16String& baseDirectory, const orvcore::UTF16String& subDirectory,
                               const orvcore::UTF16String& projectName, orvcore::UTF16String& outProjectPath) const;

    /// As above, with progress and cancellation.
    /// @param progress, opaque see orvstorage::ZipFile::UnzipItems; the fraction begins at 0 again with each entry
    bool GetZELTProjectPackage(const orvcore::UTF16String& baseDirectory, const orvcore::UTF16String& subDirectory,
                               const orvcore::UTF16String& projectName, orvcore::UTF16String& outProjectPath,
                               const orvstorage::ZipProgress& progress, void* opaque) const;

    /// Unpacks the package into a folder; see orvstorage::ZipFile::UnZip for what is refused and what is left after a
    /// failure. When the folder's path is long, the package is unpacked into a private folder and copied from there.
    /// @param overwrite whether files that stand in the folder are replaced
    [[nodiscard]] bool UnZip(const std::filesystem::path& directory, bool overwrite) const;
    /// As above, with progress and cancellation.
    /// @param progress, opaque see orvstorage::ZipFile::UnZip
    [[nodiscard]] bool UnZip(const std::filesystem::path& directory, bool overwrite,
                             const orvstorage::ZipProgress& progress, void* opaque) const;

    /// Makes a new package in its place from all files of a folder, which bear the entries' names; see
    /// orvstorage::ZipFile::Zip.
    /// @param progress told the fraction done and `opaque`; its false cancels and leaves the old package as it was
    [[nodiscard]] bool Zip(const std::filesystem::path& directory, const std::function<bool(double, void*)>& progress,
                           void* opaque) const;

    /// The full paths of all files below `directory` with exactly this extension (case counts), a folder's sub-folders
    /// before its own files, each in name order. Empty when there is none.
    /// @param extension without dot
    static std::optional<std::vector<orvcore::UTF16String>>
    GetPathOfUnZippedProject(const char* extension, const orvcore::UTF16String& directory);

    /// @name Looking closer
    /// @{
    /// The path that was given.
    const orvcore::UTF8String& GetPackagePath() const noexcept;
    /// The file that is really open: the package, or its private copy.
    const orvcore::UTF8String& GetWorkingPath() const noexcept;
    /// The archive that is read: entries, limits, checks.
    orvstorage::ZipFile& GetArchive() noexcept;
    const orvstorage::ZipFile& GetArchive() const noexcept;
    /// Why the last operation on the archive failed, naming the package as it was given. A read that found nothing
    /// reports the last name it tried.
    orvstorage::ZipFailure GetLastFailure() const;
    /// @}

private:
    std::shared_ptr<detail::PackageFile> file_;
};

} // namespace orvcapsule
