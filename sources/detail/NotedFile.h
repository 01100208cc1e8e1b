#pragma once

#include <sources/CapsuleEntry.h>

#include <orvcore/files/FileSystem.h>

#include <boost/shared_ptr.hpp>

namespace orvcapsule::detail {

/// What a listing found out, beside its entry, about the file that it read it from: a package, or a definition that
/// lies beside its package.
struct NotedFile {
    /// All that what the file says of the entry depends on, the file's content aside; no two notes of one place have it
    /// in common. Empty: the entry's path.
    orvcore::UTF8String subject;
    orvcore::FileInfo facts;
    bool hasStill = false; ///< of a package: there is a preview to extract
    bool hasVideo = false;
    /// The file was read in good order and nothing of it is left to be tried again.
    bool isKnown = false;

    const orvcore::UTF8String& SubjectFor(const CapsuleEntry& entry) const noexcept
    {
        return subject.empty() ? entry.path : subject;
    }
};

/// An entry and the file that it was read from.
struct NotedEntry {
    boost::shared_ptr<CapsuleEntry> entry;
    NotedFile noted;
};

} // namespace orvcapsule::detail
