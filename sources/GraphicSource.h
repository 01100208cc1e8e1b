#pragma once

#include <sources/CapsuleEntry.h>
#include <sources/CheckCancel.h>

#include <boost/shared_ptr.hpp>

#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <vector>

namespace orvcapsule {

/// A folder that exists and could not be listed, or not to its end.
struct FolderFailure {
    orvcore::UTF8String folder; ///< full path
    std::error_code reason;
};

/// How a folder that a source looks into is, for a host to show.
struct FolderState {
    enum class State { Available, Missing, Unreadable };

    orvcore::UTF8String name; ///< display name, as in the source's filter
    std::string id;           ///< as in the filter, too
    State state = State::Available;
    std::error_code reason; ///< of one that cannot be read
};

/// A still preview that was asked for.
struct Thumbnail {
    orvcore::UTF8String path; ///< of the picture file; empty when there is none to show
    /// Why it cannot be shown: it is damaged, too large or cannot be written, the service does not answer. Null when
    /// there is a path, when the template has no picture, and when the request was aborted.
    std::shared_ptr<const Finding> failure;
};

/// Thrown at the end of a listing that has handed out all it could list. As a `filesystem_error` it names the first
/// of the folders that are missing from it.
class ORVCAPSULE_API unlisted_folders_exception : public std::filesystem::filesystem_error {
public:
    /// @param failures at least one
    explicit unlisted_folders_exception(std::vector<FolderFailure> failures);
    unlisted_folders_exception(const unlisted_folders_exception&) noexcept;
    unlisted_folders_exception& operator=(const unlisted_folders_exception&) noexcept;
    ~unlisted_folders_exception() override;

    /// All of them, in the order of the listing.
    const std::vector<FolderFailure>& GetFailures() const noexcept;

private:
    std::shared_ptr<const std::vector<FolderFailure>> failures_;
};

/// A place where templates are found. Sources are shared by pointer; unless said otherwise an operation may be called
/// from any thread, several at once. The order of the virtual operations is part of the interface.
class ORVCAPSULE_API IGraphicSource {
public:
    /// One source in the list of filters from which the user picks.
    struct GraphicFilterID {
        /// A folder or library inside the source.
        struct SubFilter {
            orvcore::UTF8String name; ///< display name
            std::string id;           ///< folder path or library key
            bool available = false;   ///< the folder exists and can be listed, the library is present
        };

        orvcore::UTF8String name; ///< display name in the application language
        std::string sourceID;     ///< the source's GetSourceID()
        std::vector<SubFilter> subFilters;
    };

    virtual ~IGraphicSource();

    /// Prepares the source, once, on the thread that adds it; a running request may use it then. Does nothing here.
    virtual void Initialize();
    /// Ends the source, once, under the manager's lock: never wait for a thread that calls it. Does nothing here.
    virtual void Terminate();
    /// One of the source identifiers (SourceNames.h).
    virtual std::string GetSourceID() const = 0;
    /// Fills `filter` whole; what it held is replaced.
    virtual void GetFilter(GraphicFilterID& filter) = 0;
    /// Full paths of the folders that the source looks into. None here.
    virtual std::set<orvcore::UTF8String> GetDirectories() const;
    /// Path of the entry's still preview, made or fetched now when it is not there yet, so this may block. Empty when
    /// there is none or `cancel` (which may be empty) was aborted; `GraphicSourceManager::GetThumbnail` tells why.
    virtual orvcore::UTF8String GetThumbnailPath(const boost::shared_ptr<CapsuleEntry>& entry,
                                                 const boost::shared_ptr<CheckCancel>& cancel) const = 0;
    /// Restricts what the source offers; only a stock source knows filter types. Does nothing here.
    virtual void SetFilterType(const orvcore::UTF8String& filterType);
    /// The source's share of a request's progress, relative to the other sources'. 1 here.
    virtual float GetProgressWeight() const;
};

/// A source that lists trees of folders.
class ORVCAPSULE_API ILocalGraphicSource : public IGraphicSource {
public:
    /// Receives the entries of one folder; `last` is true when no call of this listing follows.
    using OnDirectory = std::function<void(const std::vector<boost::shared_ptr<CapsuleEntry>>& entries,
                                           const orvcore::UTF16String& directory, bool last)>;

    ~ILocalGraphicSource() override;

    /// Adds to `matches` the paths of the indexed templates that contain every one of `terms`.
    virtual void SearchDB(const std::vector<orvcore::UTF16String>& terms, std::set<orvcore::UTF16String>& matches) = 0;
    /// Appends what the source holds to `results` and puts their number into `total`. An aborted listing leaves nothing
    /// in `results`. `first` and `count` are for sources that page.
    virtual void Search(const std::vector<orvcore::UTF16String>& terms,
                        std::vector<boost::shared_ptr<CapsuleEntry>>& results, int first, int count, int& total,
                        boost::shared_ptr<CheckCancel> cancel) const = 0;
    /// Lists folder after folder, each with a call of `onDirectory` on the calling thread.
    virtual void SearchByDirectory(OnDirectory onDirectory, std::vector<orvcore::UTF16String>& directories,
                                   boost::shared_ptr<CheckCancel> cancel) = 0;
    /// Lists one folder.
    virtual void SearchDirectory(OnDirectory onDirectory, const orvcore::UTF16String& directory,
                                 boost::shared_ptr<CheckCancel> cancel) = 0;
    /// The folders that the last listing of each could not read, and why. None here.
    virtual std::vector<FolderFailure> GetFolderFailures() const;
    /// The folders of the source's filter as they are now; asks the file system, which may block. None here.
    virtual std::vector<FolderState> GetFolderStates() const;
    /// GetThumbnailPath with the reason for an empty path. Unless overridden the only reason known is the entry's
    /// `previewFailure`. A class that derives from one that overrides it overrides both or neither.
    virtual Thumbnail GetThumbnail(const boost::shared_ptr<CapsuleEntry>& entry,
                                   const boost::shared_ptr<CheckCancel>& cancel) const;
    /// Whether SearchDirectory has this directory to list, be it there or gone: of several sources with one identifier
    /// it tells whose a changed directory is. May ask the file system. True here.
    virtual bool HasDirectory(const orvcore::UTF16String& directory) const;
};

} // namespace orvcapsule
