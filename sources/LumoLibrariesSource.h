#pragma once

#include <sources/GraphicSource.h>

namespace orvcapsule {

/// The templates in the user's cloud libraries, as the library manager (`lumolibmanager::LumoLibManager`) keeps them on
/// disk. They are read in place; nothing is extracted.
///
/// A listing gives one entry a template element in the manager's order, with the library as the second element of its
/// source path. An element without a package is passed over; one whose definition cannot be read is an entry with the
/// element's name and files. What a definition said is noted in the local working folder (Workspace.h): one that has
/// not changed since the last listing is not read again.
///
/// An object has no state that changes, so any operations may run at the same time. A listing asks the manager on the
/// calling thread and reads definitions on all workers of the CPU-bound executor. It polls the token before every
/// element, on several threads, counts as aborted when the process's executors end (`orvcore::IsTerminating`), and
/// advances the token's progress item by GetProgressWeight() in all. Entries are announced as they are made
/// (`CheckCancel::onEntryFound`). An exception of the manager's passes to the
/// caller.
class ORVCAPSULE_API LumoLibrariesSource : public ILocalGraphicSource {
public:
    /// @param flag kept for the host (GetFlag); no operation of this class looks at it
    explicit LumoLibrariesSource(bool flag);
    ~LumoLibrariesSource() override;

    bool GetFlag() const noexcept;

    /// `kLumoLibrariesSourceID`.
    std::string GetSourceID() const override;
    /// One record a library, in the manager's order, with the library's identifier.
    void GetFilter(GraphicFilterID& filter) override;
    /// `thumbnailPath` as it is; never blocks.
    orvcore::UTF8String GetThumbnailPath(const boost::shared_ptr<CapsuleEntry>& entry,
                                         const boost::shared_ptr<CheckCancel>& cancel) const override;
    /// 0.1.
    float GetProgressWeight() const override;

    void SearchDB(const std::vector<orvcore::UTF16String>& terms, std::set<orvcore::UTF16String>& matches) override;

    /// Lists all libraries, whatever the terms. An aborted listing empties `results`; after an exception they are as
    /// they were.
    void Search(const std::vector<orvcore::UTF16String>& terms, std::vector<boost::shared_ptr<CapsuleEntry>>& results,
                int first, int count, int& total, boost::shared_ptr<CheckCancel> cancel) const override;

    /// Calls `onDirectory` for each library, with its identifier as the directory; `last` is true at the last of them.
    /// Without libraries there is no call. Once aborted no call follows, so a last one may be missing.
    /// @param directories receives the identifiers of those calls, in order; what it held is replaced and not looked at
    void SearchByDirectory(OnDirectory onDirectory, std::vector<orvcore::UTF16String>& directories,
                           boost::shared_ptr<CheckCancel> cancel) override;

    /// As SearchByDirectory, for one library. One that there is not has a call, too, without entries.
    /// @param directory identifier of the library; `kAllLibraries`: all of them
    void SearchDirectory(OnDirectory onDirectory, const orvcore::UTF16String& directory,
                         boost::shared_ptr<CheckCancel> cancel) override;

private:
    void ListByLibrary(const OnDirectory& onDirectory, const std::vector<std::string>& libraryIDs,
                       boost::shared_ptr<CheckCancel> cancel) const;

    const bool flag_;
};

} // namespace orvcapsule
