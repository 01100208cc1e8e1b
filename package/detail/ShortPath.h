#pragma once

#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/text/Strings.h>

#include <memory>

namespace orvcapsule::detail {

/// Below the system's temporary folder: where packages are worked on, a private folder each.
inline constexpr std::u8string_view kPrivateArea = u8"Capsule";

/// The short-path rule: a path of 221 UTF-8 bytes or more is too long to be worked on. The limit is fixed and does not
/// depend on the system's own.
bool IsLongPath(const orvcore::UTF8String& path);

/// Null for a path that is used as it is, a new private folder to work in for a long one.
std::unique_ptr<const orvcore::TemporaryFolder> FolderForLongPath(const orvcore::UTF8String& path);

} // namespace orvcapsule::detail
