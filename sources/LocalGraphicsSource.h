#pragma once

#include <sources/GraphicSource.h>

#include <cstdint>
#include <filesystem>
#include <utility>

namespace orvcapsule {

namespace detail {
class FolderListing;
}

/// A preview that is larger than this many bytes unpacked is left out of an entry, and a definition that is larger
/// counts as unreadable: what a listing takes of memory does not depend on what stands in a package.
inline constexpr std::uint64_t kMaxPreviewBytes = std::uint64_t{64} << 20;

/// The templates in folders of the local disk: those in and below a root folder, and those that lie directly in each of
/// the user's own ("custom") directories. A template is a file whose extension is exactly ".zelt".
///
/// A listing gives one entry a package in a stable order: the root folder's, then the custom directories' in the order
/// given; within the root a folder's sub-folders come before its own files, both by name. Links to folders are not
/// followed. What is damaged, unreadable or vanishes meanwhile never ends a listing: a package that cannot be read is
/// an entry with what the file system tells of it, a folder that cannot be read is passed over. What is thrown
/// (`std::filesystem::filesystem_error`) is told at each operation.
///
/// Previews are extracted into the local working folder (Workspace.h) when an entry is made, and found there the next
/// time. Where one cannot be written, the disk being full for instance, the entry goes without. What a package's
/// definition said is noted there too: a package that has not changed since the last listing is not opened again.
///
/// An object never changes, so any operations may run at the same time. Listings use all workers of the CPU-bound
/// executor; they poll the token before every package, on several threads. Each advances the token's progress item by
/// GetProgressWeight() in all.
class ORVCAPSULE_API LocalGraphicsSource : public ILocalGraphicSource {
public:
    /// @param rootFolder need not exist; empty: none
    /// @param customDirectories pairs of display name and path; one with an empty path is passed over everywhere
    LocalGraphicsSource(const orvcore::UTF16String& rootFolder,
                        const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& customDirectories);
    ~LocalGraphicsSource() override;

    /// The two arguments as they were given.
    const orvcore::UTF16String& GetRootFolder() const noexcept;
    const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& GetCustomDirectories() const noexcept;

    /// Prepares the local working folder, once for the process; for the host's main thread. Throws nothing.
    void Initialize() override;
    /// `kLocalSourceID`.
    std::string GetSourceID() const override;
    /// The root folder's record comes first, with the identifier `kDefaultLocalSourceID`; then the custom directories
    /// by name and, where names are equal, by path, both in byte order.
    void GetFilter(GraphicFilterID& filter) override;
    /// The root folder, every folder below it that directly holds a template, and the custom directories that exist.
    /// Absolute paths without closing separator, but the custom directories as they were given. Throws when the root
    /// folder exists but cannot be listed, or when the process runs out of files or memory.
    std::set<orvcore::UTF8String> GetDirectories() const override;
    /// A PNG file. The preview of the package as it stands now, or of a package that is gone if it was extracted
    /// before.
    orvcore::UTF8String GetThumbnailPath(const boost::shared_ptr<CapsuleEntry>& entry,
                                         const boost::shared_ptr<CheckCancel>& cancel) const override;
    /// 0.9.
    float GetProgressWeight() const override;

    void SearchDB(const std::vector<orvcore::UTF16String>& terms, std::set<orvcore::UTF16String>& matches) override;

    /// Without terms, lists everything; with terms, nothing: SearchDB finds those. An aborted listing empties
    /// `results`. Throws, with `results` as they were, when the root folder or a custom directory exists but cannot be
    /// listed as a whole, or when the process runs out of files or memory.
    void Search(const std::vector<orvcore::UTF16String>& terms, std::vector<boost::shared_ptr<CapsuleEntry>>& results,
                int first, int count, int& total, boost::shared_ptr<CheckCancel> cancel) const override;

    /// Calls `onDirectory` for the root folder (as it was given), then for each custom directory that exists; `last` is
    /// true at the last of these calls. Once aborted no call follows, so a last one may be missing. Throws as Search
    /// does; what was handed out before stands.
    /// @param directories receives the folders of those calls, in order; what it held is replaced and not looked at
    void SearchByDirectory(OnDirectory onDirectory, std::vector<orvcore::UTF16String>& directories,
                           boost::shared_ptr<CheckCancel> cancel) override;

    /// Calls `onDirectory` once, with `last` true, unless aborted. The root folder (also by the name
    /// `kDefaultLocalSourceID`) is listed with all below it; a custom directory, or a folder below the root, without
    /// what is below it. Any other folder, or a missing one, holds no entries. Throws as Search does.
    void SearchDirectory(OnDirectory onDirectory, const orvcore::UTF16String& directory,
                         boost::shared_ptr<CheckCancel> cancel) override;

private:
    struct Target;
    std::vector<Target> ExistingTargets() const;
    Target FindTarget(const orvcore::UTF16String& directory) const;
    double BeginListing(detail::FolderListing& listing, std::size_t targets) const;

    const orvcore::UTF16String rootFolder_;
    const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>> customDirectories_;
    const std::filesystem::path root_; ///< its full path
};

} // namespace orvcapsule
