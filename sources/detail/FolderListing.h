#pragma once

#include <sources/detail/FolderWalk.h>
#include <sources/detail/Listing.h>
#include <sources/detail/LocalEntryMaker.h>

#include <vector>

namespace orvcapsule::detail {

/// One listing of local folders; the entries come in the order of the walk.
class FolderListing : public Listing {
public:
    FolderListing(const std::string& sourceID, boost::shared_ptr<CheckCancel> cancel);

    /// What its line of progress says while it lists the folder.
    static orvcore::UTF8String TitleFor(const orvcore::UTF8String& directory);

    /// Appends the entries of the folder's packages and advances by `weight` while it does. Nothing is appended when it
    /// throws or was cancelled.
    void List(const std::filesystem::path& folder, Depth depth, const std::string& directoryKey, double weight,
              Entries& results);

    /// The folders that could not be listed so far.
    const std::vector<FolderFailure>& GetFailures() const noexcept
    {
        return failures_;
    }

private:
    LocalEntryMaker maker_;
    std::vector<FolderFailure> failures_;
};

} // namespace orvcapsule::detail
