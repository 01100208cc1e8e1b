#pragma once

#include <orvcore/text/Strings.h>

#include <cstdint>
#include <vector>

namespace kinlet {

/// A font that a composition uses and the author's machine did not have.
struct MissingFont {
    orvcore::UTF16String family;
    orvcore::UTF16String style;
    orvcore::UTF16String postScriptName;
    orvcore::UTF16String fullName;
    /// Kind of the font; the number is the host's.
    std::int64_t type = 0;

    bool operator==(const MissingFont&) const = default;
};

/// An effect plug-in that a composition uses and the author's machine did not have.
struct MissingPlugin {
    orvcore::UTF16String matchName;

    bool operator==(const MissingPlugin&) const = default;
};

/// A footage file that a composition uses and that was not found.
struct MissingFootage {
    /// The path as the author's machine wrote it, with that machine's separators.
    orvcore::UTF8String path;

    bool operator==(const MissingFootage&) const = default;
};

/// What was missing when the composition was last saved.
struct MissingAssets {
    std::vector<MissingFont> fonts;
    std::vector<MissingPlugin> plugins;
    std::vector<MissingFootage> footage;
    /// Which kinds of assets are offline; the bits are the host's.
    std::uint64_t offlineMasks = 0;

    bool operator==(const MissingAssets&) const = default;
};

} // namespace kinlet
