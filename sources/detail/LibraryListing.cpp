#include <sources/detail/LibraryListing.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Paths.h>
#include <sources/ILumoLibrariesWrapper.h>
#include <sources/SourceNames.h>
#include <sources/detail/EntryFields.h>
#include <sources/detail/ListedDefinition.h>

#include <boost/smart_ptr/make_shared.hpp>

namespace orvcapsule::detail {

namespace libraries = ILumoLibrariesWrapper;
using orvcore::FileKind;

// What the library manager says of one element.
struct LibraryListing::Element {
    boost::shared_ptr<CapsuleEntry> entry;
    orvcore::UTF8String definition; // path of the definition document
};

LibraryListing::LibraryListing(boost::shared_ptr<CheckCancel> cancel)
    : Listing(kLumoLibrariesSourceID, std::move(cancel))
{
}

// The manager is asked in one go, so that a library that is replaced meanwhile is listed as it was or as it is now;
// files that vanish afterwards leave an entry with less in it.
void LibraryListing::List(const std::string& libraryID, double weight, Entries& results)
{
    std::vector<std::string> elementIDs;
    libraries::GetCapsuleElementIDs(libraryID, elementIDs);
    const std::vector<Element> elements = FindElements(libraryID, elementIDs);
    const double step = elementIDs.empty() ? 0.0 : weight / static_cast<double>(elementIDs.size());
    Advance(weight - step * static_cast<double>(elements.size())); // those without a package
    const auto make = [&](std::size_t number, const ListingNotes& known, NotedFile& noted) {
        const Element& element = elements[number];
        FillFromFiles(*element.entry, element, known, noted);
        return element.entry;
    };
    MakeEntries(orvcore::ToUTF8(libraryID), elements.size(), step, make, results);
}

std::vector<LibraryListing::Element> LibraryListing::FindElements(const std::string& libraryID,
                                                                  const std::vector<std::string>& elementIDs)
{
    std::vector<Element> elements;
    elements.reserve(elementIDs.size());
    for (const std::string& elementID : elementIDs) {
        if (IsCancelled()) {
            break;
        }
        const std::string path = libraries::GetCapsulePath(libraryID, elementID);
        if (path.empty()) {
            continue;
        }
        auto entry = boost::make_shared<CapsuleEntry>();
        entry->sourcePath = {GetSourceID(), libraryID};
        entry->path = orvcore::AsUTF8(path);
        entry->lumoElementID = orvcore::AsUTF8(elementID);
        entry->name = orvcore::ToUTF16(libraries::GetElementName(libraryID, elementID));
        entry->thumbnailPath = orvcore::AsUTF8(libraries::GetCapsuleThumbnailPath(libraryID, elementID));
        entry->videoPreviewPath = orvcore::AsUTF8(libraries::GetCapsuleVideoThumbnailPath(libraryID, elementID));
        elements.push_back({std::move(entry), orvcore::ToUTF8(libraries::GetCapsuleSchemaPath(libraryID, elementID))});
    }
    return elements;
}

void LibraryListing::FillFromFiles(CapsuleEntry& entry, const Element& element, const ListingNotes& known,
                                   NotedFile& noted)
{
    std::error_code ignored; // what cannot be looked at is not there
    noted.facts = orvcore::InspectTarget(orvcore::PathFromUTF8(element.definition), ignored);
    // Where the definition has no name the entry keeps the element's, so a note is good for that name only.
    noted.subject = element.definition;
    noted.subject.append(1, u8'\0').append(entry.lumoElementID).append(1, u8'\0').append(orvcore::ToUTF8(entry.name));
    if (noted.facts.kind == FileKind::File && !known.Recall(entry, noted)) {
        noted.isKnown =
            FillFromDefinitionFile(entry, element.definition, noted.facts.size, [this] { return IsCancelled(); });
    }
    const orvcore::FileInfo package = orvcore::InspectTarget(orvcore::PathFromUTF8(entry.path), ignored);
    if (package.kind == FileKind::File) {
        entry.modified = ToPosixTime(package.modified);
        entry.fileSize = package.size;
    }
}

} // namespace orvcapsule::detail
