#pragma once

#include <capsule/Capsule.h>
#include <sources/CapsuleEntry.h>

#include <orvcore/files/FileSystem.h>

namespace orvcapsule::detail {

/// Fills what an entry shows of its template, in the application language of now. The name is left as it is where the
/// template has none.
void FillFromCapsule(CapsuleEntry& entry, const Capsule& capsule);

/// A file time as entries hold it; `not_a_date_time` outside the calendar's years 1400 to 9999.
boost::posix_time::ptime ToPosixTime(orvcore::FileTime time);
/// The other way round; the clock's beginning for `not_a_date_time` and other special values.
orvcore::FileTime ToFileTime(const boost::posix_time::ptime& time);

} // namespace orvcapsule::detail
