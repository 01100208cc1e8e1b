#pragma once

#include <orvcore/files/FileSystem.h>

namespace orvcapsule::detail {

/// What a listing found out about one package, beside its entry.
struct NotedFile {
    orvcore::FileInfo facts;
    bool hasStill = false;
    bool hasVideo = false;
    /// The package was read in good order and nothing of it is left to be tried again.
    bool isKnown = false;
};

} // namespace orvcapsule::detail
