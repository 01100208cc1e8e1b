#pragma once

#include <sources/GraphicSource.h>
#include <sources/PreviewLimit.h>

#include <filesystem>
#include <utility>

namespace orvcapsule {

namespace detail {
class FailureLog;
class FolderListing;
} // namespace detail

/// The templates in folders of the local disk: those in and below a root folder, and those that lie directly in each of
/// the user's own ("custom") directories. A template is a file whose extension is exactly ".zelt".
///
/// A listing gives one entry per package in a stable order: the root folder's, then the custom directories' in the
/// order given; within the root a folder's sub-folders come before its own files, both by name. Links to folders are
/// not followed. Packages are opened without a password: an encrypted one has an entry with the reason in `refusal`. A
/// package that is damaged, unreadable or deleted meanwhile does not end a listing: a package that
/// cannot be read gives an entry with what the file system tells of it. A folder that exists and cannot be read only
/// loses its own content: the listing hands out everything else and then throws `unlisted_folders_exception`, and
/// GetFolderFailures tells of the folder until it is listed again.
///
/// Previews are extracted into the local working folder (Workspace.h) when an entry is made, and found there the next
/// time. Where one cannot be had, the disk being full for instance, the entry goes without and tells why. What a
/// package's definition said is noted there too: a package that has not changed since the last listing is not opened
/// again.
///
/// What an object lists never changes, so any operations may run at the same time. Listings use all workers of the
/// CPU-bound executor; they poll the token before every package, on several threads, and count as aborted when the
/// process's executors end (`orvcore::IsTerminating`). Each advances the token's progress item by GetProgressWeight()
/// in all, and announces entries (`CheckCancel::onEntryFound`) while it still walks through the folders.
class ORVCAPSULE_API LocalGraphicsSource : public ILocalGraphicSource {
public:
    /// @param rootFolder need not exist; empty: none
    /// @param customDirectories pairs of display name and path; one with an empty path is passed over everywhere
    explicit LocalGraphicsSource(
        const orvcore::UTF16String& rootFolder,
        const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& customDirectories = {});
    ~LocalGraphicsSource() override;

    /// Makes the source that replaces this one when the user's folders have changed: a source of the same kind with the
    /// same root. The manager calls neither `Initialize` of the new source nor `Terminate` of this one: resources other
    /// than the folders pass to the new source, whose `Terminate` frees them. This source may still be in use. Any
    /// thread.
    ///
    /// A derived class must override it. Otherwise the result is empty and this source stays: an object of this class
    /// would lack what the derived class adds.
    virtual std::shared_ptr<LocalGraphicsSource>
    MakeSuccessor(const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& customDirectories) const;

    /// The two arguments as they were given.
    const orvcore::UTF16String& GetRootFolder() const noexcept;
    const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& GetCustomDirectories() const noexcept;

    /// Prepares the local working folder, once for the process; for the host's main thread. Throws nothing.
    void Initialize() override;
    /// `kLocalSourceID`.
    std::string GetSourceID() const override;
    /// The root folder's record comes first, with the identifier `kDefaultLocalSourceID`; then the custom directories
    /// by name and, where names are equal, by path, both in byte order. One that exists and cannot be listed is not
    /// available.
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
    /// `results`. When folders could not be listed, `results` and `total` have all else before it throws; after any
    /// other exception `results` are as they were.
    void Search(const std::vector<orvcore::UTF16String>& terms, std::vector<boost::shared_ptr<CapsuleEntry>>& results,
                int first, int count, int& total, boost::shared_ptr<CheckCancel> cancel) const override;

    /// Calls `onDirectory` for the root folder (as it was given), then for each custom directory that exists, with what
    /// could be listed of it; `last` is true at the last of these calls. Once aborted no call follows, so a last one
    /// may be missing. Throws after the last call, when folders could not be listed.
    /// @param directories receives the folders of those calls, in order; what it held is replaced and not looked at
    void SearchByDirectory(OnDirectory onDirectory, std::vector<orvcore::UTF16String>& directories,
                           boost::shared_ptr<CheckCancel> cancel) override;

    /// Calls `onDirectory` once, with `last` true, unless aborted. The root folder (also by the name
    /// `kDefaultLocalSourceID`) is listed with all its sub-folders; a custom directory, or a folder below the root,
    /// without its sub-folders. Any other folder, or a missing one, has no entries. Entries have the same paths as in a
    /// listing of everything, whatever spelling `directory` uses. Throws after the call, when folders could not be
    /// listed.
    void SearchDirectory(OnDirectory onDirectory, const orvcore::UTF16String& directory,
                         boost::shared_ptr<CheckCancel> cancel) override;

    std::vector<FolderFailure> GetFolderFailures() const override;
    std::vector<FolderState> GetFolderStates() const override;
    Thumbnail GetThumbnail(const boost::shared_ptr<CapsuleEntry>& entry,
                           const boost::shared_ptr<CheckCancel>& cancel) const override;
    /// The root folder, what lies below it, and the custom directories, in whatever spelling.
    bool HasDirectory(const orvcore::UTF16String& directory) const override;

private:
    struct Target;
    std::vector<Target> AllTargets() const;
    std::vector<Target> ExistingTargets() const;
    Target FindTarget(const orvcore::UTF16String& directory) const;
    double BeginListing(detail::FolderListing& listing, std::size_t targets) const;

    const orvcore::UTF16String rootFolder_;
    const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>> customDirectories_;
    const std::filesystem::path root_; ///< its full path
    const std::unique_ptr<detail::FailureLog> failures_;
};

} // namespace orvcapsule
