#pragma once

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/support/Browser.h>

namespace zelt {

/// False, with the error reported, when the places name nothing to look into.
bool NamePlaces(const Places& places);

/// The same places by their full paths. One that is not there keeps its name, which the library passes over; it is
/// reported and `exit` tells of it.
Places FullPlaces(const Places& places, ExitCode& exit);

} // namespace zelt
