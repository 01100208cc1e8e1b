#pragma once

#include <lumolibmanager/LumoLibManager.h>
#include <sources/detail/Listing.h>
#include <sources/detail/ListingNotes.h>

#include <string>

namespace orvcapsule::detail {

/// One listing of cloud libraries; the entries come in the order of the library manager.
class LibraryListing : public Listing {
public:
    explicit LibraryListing(boost::shared_ptr<CheckCancel> cancel);

    /// Appends the entries of the library's template elements and advances by `weight` while it does. Nothing is
    /// appended when it throws or was cancelled.
    void List(const std::string& libraryID, double weight, Entries& results);

private:
    struct Element;
    Element NewElement(const std::string& libraryID, const lumolibmanager::ListedElement& listed) const;
    void FillFromFiles(const Element& element, const ListingNotes& known, NotedFile& noted);
};

} // namespace orvcapsule::detail
