#pragma once

#include <sources/GraphicSource.h>
#include <sources/detail/ListingNotes.h>
#include <sources/detail/PreviewCache.h>

#include <functional>

namespace orvcapsule::detail {

/// Makes the entries of packages in local folders. May be used by several threads at once.
class LocalEntryMaker {
public:
    /// @param stop asked before each reading of a package; true leaves out the rest of an entry, which is then of no
    /// use
    LocalEntryMaker(const std::string& sourceID, std::function<bool()> stop);

    /// The entry of the package at the full path `package`, found under `directoryKey`; empty when there is no such
    /// file. A package that cannot be read, for whatever reason, still gives an entry with what the file system tells,
    /// and its video if there is one. The package is opened once; not at all when `known` has an unchanged record of it
    /// and its previews exist.
    boost::shared_ptr<CapsuleEntry> Make(const std::filesystem::path& package, const std::string& directoryKey,
                                         const ListingNotes& known, NotedFile& state) const;

    /// The entry's still preview, extracted now if it was not before.
    Thumbnail GetThumbnail(const CapsuleEntry& entry) const;

private:
    void FillFromContent(CapsuleEntry& entry, ListedPackage& package, const ListingNotes& known,
                         NotedFile& state) const;
    Thumbnail Preview(PreviewKind kind, const CapsuleEntry& entry, ListedPackage& package, NotedFile& state) const;

    std::string sourceID_;
    PreviewCache previews_;
    bool extractsPreviews_;
    std::function<bool()> stop_;
};

} // namespace orvcapsule::detail
