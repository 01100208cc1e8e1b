#pragma once

#include <orvcore/files/FileSystem.h>

#include <filesystem>
#include <functional>
#include <system_error>

namespace orvcore {

/// How a walk goes on.
enum class WalkNext {
    GoOn,
    PassOver, ///< not into this folder
    End,
};

/// What a walk tells; each call is made on the thread that walks, and what it throws ends the walk.
struct TreeVisitor {
    /// Told of each thing below the top, of a folder before what it holds. The path is the folder's with the name
    /// appended, the kind as InspectPath would find it.
    std::function<WalkNext(const std::filesystem::path& path, FileKind kind)> visit;
    /// Told of each folder below the top after what it holds, unless that was passed over. May be empty.
    std::function<void(const std::filesystem::path& folder)> leave = {};
    /// Told of a folder, the top too, that cannot be read, or not to its end. After GoOn the walk visits what it did
    /// hold. When this is empty, WalkTree throws `std::filesystem::filesystem_error` with that folder's path.
    std::function<WalkNext(const std::filesystem::path& folder, const std::error_code& error)> fail = {};
};

/// Goes through all that the folder `top` holds, depth first: of each folder the sub-folders, then all else, both in
/// the order of names, so that every system gives the same order. Links are not followed, so the walk always ends. A
/// folder is read before anything in it is visited: the visitor may remove what it is told of.
/// @return false when the visitor ended it
ORVPLATFORM_API bool WalkTree(const std::filesystem::path& top, const TreeVisitor& visitor);

} // namespace orvcore
