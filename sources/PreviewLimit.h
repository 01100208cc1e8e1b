#pragma once

#include <orvcapsule/Export.h>

#include <cstdint>

namespace orvcapsule {

/// A preview that is larger than this many bytes unpacked is left out of an entry, and a definition that is larger
/// counts as unreadable: what a listing takes of memory does not depend on what stands in a package. Previews of more
/// than 16 times their package's size share 256 MiB a listing; once those are used up they are left out, too.
inline constexpr std::uint64_t kMaxPreviewBytes = std::uint64_t{64} << 20;

/// Whether listings of local folders extract previews. They do at first; without, they read definitions alone, entries
/// have no preview paths, and `ILocalGraphicSource::GetThumbnailPath` extracts a still picture when it is asked for.
/// Holds for the listings of this process that begin later. Any thread.
ORVCAPSULE_API void SetPreviewsInListings(bool extract) noexcept;
ORVCAPSULE_API bool GetPreviewsInListings() noexcept;

} // namespace orvcapsule
