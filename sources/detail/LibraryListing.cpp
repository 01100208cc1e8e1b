#include <sources/detail/LibraryListing.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Paths.h>
#include <sources/ILumoLibrariesWrapper.h>
#include <sources/SourceNames.h>
#include <sources/detail/EntryFields.h>
#include <sources/detail/EntryMaking.h>
#include <sources/detail/ListedDefinition.h>
#include <validation/shared/CannotOpen.h>

#include <boost/smart_ptr/make_shared.hpp>

namespace orvcapsule::detail {

namespace libraries = ILumoLibrariesWrapper;
using orvcore::FileInfo;
using orvcore::FileKind;

namespace {

// What is known of the file, which may be nothing yet.
FileInfo InfoOf(const FileInfo& known, const orvcore::UTF8String& path, std::error_code& error)
{
    return known.kind == FileKind::File ? known : orvcore::InspectTarget(orvcore::PathFromUTF8(path), error);
}

Finding WithoutDefinition(const std::error_code& error)
{
    return error ? CannotOpen(error)
                 : Finding{Severity::Error, "MissingDefinition", "its definition file is not there"};
}

} // namespace

// What the library manager says of one element.
struct LibraryListing::Element {
    boost::shared_ptr<CapsuleEntry> entry;
    orvcore::UTF8String definition; // path of the definition document
    orvcore::FileInfo definitionInfo;
    orvcore::FileInfo packageInfo;
};

LibraryListing::LibraryListing(boost::shared_ptr<CheckCancel> cancel)
    : Listing(kLumoLibrariesSourceID, std::move(cancel))
{
}

// The first entries are made while the manager still tells of others. A library that is replaced meanwhile, or files
// that vanish, leave an entry with less in it.
void LibraryListing::List(const std::string& libraryID, double weight, Entries& results)
{
    EntryMaking making(*this, orvcore::ToUTF8(libraryID));
    std::size_t told = 0;
    std::vector<std::size_t> order;
    libraries::ListCapsules(libraryID, [&](const lumolibmanager::ListedElement& listed) {
        ++told;
        if (!listed.primaryPath.empty()) {
            order.push_back(order.size());
            making.Add([this, element = NewElement(libraryID, listed)](const ListingNotes& known, NotedFile& noted) {
                FillFromFiles(element, known, noted);
                return element.entry;
            });
        }
        return !IsCancelled();
    });
    const double step = told == 0 ? 0.0 : weight / static_cast<double>(told);
    Advance(weight - step * static_cast<double>(order.size())); // those without a package
    making.SetStep(step);
    making.Finish(order, results);
}

LibraryListing::Element LibraryListing::NewElement(const std::string& libraryID,
                                                   const lumolibmanager::ListedElement& listed) const
{
    auto entry = boost::make_shared<CapsuleEntry>();
    entry->sourcePath = {GetSourceID(), libraryID};
    entry->path = orvcore::AsUTF8(listed.primaryPath);
    entry->lumoElementID = orvcore::AsUTF8(listed.id);
    entry->name = orvcore::ToUTF16(listed.name);
    entry->thumbnailPath = orvcore::AsUTF8(listed.imagePath);
    entry->videoPreviewPath = orvcore::AsUTF8(listed.videoPath);
    return {std::move(entry), orvcore::ToUTF8(listed.alternatePath), listed.alternateInfo, listed.primaryInfo};
}

void LibraryListing::FillFromFiles(const Element& element, const ListingNotes& known, NotedFile& noted)
{
    CapsuleEntry& entry = *element.entry;
    std::error_code error;
    noted.facts = InfoOf(element.definitionInfo, element.definition, error);
    // Where the definition has no name the entry keeps the element's, so a note is good for that name only.
    noted.subject = element.definition;
    noted.subject.append(1, u8'\0').append(entry.lumoElementID).append(1, u8'\0').append(orvcore::ToUTF8(entry.name));
    if (noted.facts.kind != FileKind::File) {
        entry.refusal = std::make_shared<const Finding>(WithoutDefinition(error));
    } else if (!known.Recall(entry, noted)) {
        noted.isKnown =
            FillFromDefinitionFile(entry, element.definition, noted.facts.size, [this] { return IsCancelled(); });
    }
    // Of a package that cannot be looked at the size and the time stay unknown: the definition is shown all the same.
    const FileInfo package = InfoOf(element.packageInfo, entry.path, error);
    if (package.kind == FileKind::File) {
        entry.modified = ToPosixTime(package.modified);
        entry.fileSize = package.size;
    }
}

} // namespace orvcapsule::detail
