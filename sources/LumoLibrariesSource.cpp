#include <sources/LumoLibrariesSource.h>

#include <orvcore/host/Localiser.h>
#include <sources/ILumoLibrariesWrapper.h>
#include <sources/SearchIndex.h>
#include <sources/SourceNames.h>
#include <sources/detail/LibraryListing.h>

#include <algorithm>

// Nothing is kept between two calls: the library manager is asked each time, because synchronisation may add, change or
// remove a library at any moment. Between the list of libraries and the look at one of them a library may go; it then
// has no elements, which is an answer like any other. Previews and packages are files of the manager's, used where they
// lie.

namespace orvcapsule {

namespace libraries = ILumoLibrariesWrapper;
using detail::LibraryListing;
using orvcore::UTF16String;
using orvcore::UTF8String;
using Entries = std::vector<boost::shared_ptr<CapsuleEntry>>;

namespace {

std::vector<std::string> LibraryIDs()
{
    std::vector<std::string> libraryIDs;
    libraries::GetLibraryList(libraryIDs);
    return libraryIDs;
}

UTF8String ProgressTitle()
{
    return orvcore::Localiser::Resolve("$$$/LumoLibrariesSource/LoadLibraries=Loading Lumo Library Motion Graphics");
}

// Hands out the entries of one library after the other; false, without those of the one it is at, when cancelled.
template <class OnLibrary>
bool ListEach(LibraryListing& listing, const std::vector<std::string>& libraryIDs, double weight, OnLibrary&& onLibrary)
{
    const double step = weight / static_cast<double>(std::max<std::size_t>(libraryIDs.size(), 1));
    if (libraryIDs.empty()) {
        listing.Advance(weight);
    }
    for (const std::string& libraryID : libraryIDs) {
        Entries entries;
        listing.List(libraryID, step, entries);
        if (listing.IsCancelled()) {
            return false;
        }
        onLibrary(entries, libraryID);
    }
    return !listing.IsCancelled();
}

} // namespace

LumoLibrariesSource::LumoLibrariesSource(bool flag)
    : flag_(flag)
{
}

LumoLibrariesSource::~LumoLibrariesSource() = default;

bool LumoLibrariesSource::GetFlag() const noexcept
{
    return flag_;
}

std::string LumoLibrariesSource::GetSourceID() const
{
    return kLumoLibrariesSourceID;
}

void LumoLibrariesSource::GetFilter(GraphicFilterID& filter)
{
    filter.name = orvcore::Localiser::Resolve("$$$/GraphicSource/local/LumoLibraries=Lumo Libraries");
    filter.sourceID = GetSourceID();
    filter.subFilters.clear();
    for (const std::string& libraryID : LibraryIDs()) {
        filter.subFilters.push_back(
            {orvcore::ToUTF8(libraries::GetLibraryNameFromLibraryID(libraryID)), libraryID, true});
    }
}

UTF8String LumoLibrariesSource::GetThumbnailPath(const boost::shared_ptr<CapsuleEntry>& entry,
                                                 const boost::shared_ptr<CheckCancel>& /*cancel*/) const
{
    return entry ? entry->thumbnailPath : UTF8String();
}

float LumoLibrariesSource::GetProgressWeight() const
{
    return 0.1F;
}

void LumoLibrariesSource::SearchDB(const std::vector<UTF16String>& terms, std::set<UTF16String>& matches)
{
    QueryRapidFindDB(terms, matches);
}

void LumoLibrariesSource::Search(const std::vector<UTF16String>& /*terms*/, Entries& results, int /*first*/,
                                 int /*count*/, int& total, boost::shared_ptr<CheckCancel> cancel) const
{
    LibraryListing listing(std::move(cancel));
    const std::size_t before = results.size();
    const auto append = [&](Entries& entries, const std::string& /*libraryID*/) {
        results.insert(results.end(), std::make_move_iterator(entries.begin()), std::make_move_iterator(entries.end()));
    };
    try {
        if (!ListEach(listing, LibraryIDs(), double{GetProgressWeight()}, append)) {
            results.clear();
        }
    } catch (...) {
        results.resize(before);
        throw;
    }
    total = static_cast<int>(results.size());
}

void LumoLibrariesSource::ListByLibrary(const OnDirectory& onDirectory, const std::vector<std::string>& libraryIDs,
                                        boost::shared_ptr<CheckCancel> cancel) const
{
    LibraryListing listing(std::move(cancel));
    const double weight = double{GetProgressWeight()};
    listing.BeginProgress(ProgressTitle(), weight);
    ListEach(listing, libraryIDs, weight, [&](const Entries& entries, const std::string& libraryID) {
        onDirectory(entries, orvcore::ToUTF16(libraryID), &libraryID == &libraryIDs.back());
    });
}

void LumoLibrariesSource::SearchByDirectory(OnDirectory onDirectory, std::vector<UTF16String>& directories,
                                            boost::shared_ptr<CheckCancel> cancel)
{
    directories.clear();
    const auto note = [&](const Entries& entries, const UTF16String& library, bool last) {
        directories.push_back(library);
        onDirectory(entries, library, last);
    };
    ListByLibrary(note, LibraryIDs(), std::move(cancel));
}

void LumoLibrariesSource::SearchDirectory(OnDirectory onDirectory, const UTF16String& directory,
                                          boost::shared_ptr<CheckCancel> cancel)
{
    std::vector<std::string> libraryIDs = LibraryIDs();
    if (directory != kAllLibraries) {
        std::erase_if(libraryIDs, [&](const std::string& id) { return orvcore::ToUTF16(id) != directory; });
    }
    ListByLibrary(onDirectory, libraryIDs, cancel);
    if (libraryIDs.empty() && !(cancel && cancel->GetAbort())) {
        onDirectory({}, directory, true);
    }
}

} // namespace orvcapsule
