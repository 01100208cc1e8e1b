#pragma once

#include <sources/CapsuleEntry.h>

#include <cstdint>
#include <memory>
#include <string>

namespace orvcapsule {
class Capsule;
class StockCapsuleEntry;
class UIString;
} // namespace orvcapsule

namespace zelt {

/// What the page is told besides what a package holds.
struct DetailsFacts {
    std::string folder;          ///< of the package, for people
    bool editable = false;       ///< whether a changed template can be stored
    bool replaceable = false;    ///< whether it can take the original's place
    std::string copyName = {};   ///< a free file name for a copy
    std::string copyFolder = {}; ///< where the copy is put
    bool areFontsTold = true;    ///< whether this machine lacks a font
    bool isChecked = false;      ///< with all that is wrong with it; reads the whole package
};

/// A localised text as an object from locale to text.
std::string TextsAsJSON(const orvcapsule::UIString& texts);

/// Everything about a template for its details: what its package says, or why it cannot be read, as one object.
std::string DetailsAsJSON(const orvcapsule::CapsuleEntry& entry, const DetailsFacts& facts);

/// The same of a stock template. @param capsule  its description; null: there is none
std::string StockDetailsAsJSON(const orvcapsule::StockCapsuleEntry& entry, const orvcapsule::Capsule* capsule);

/// All that is wrong with a package, as `zelt check --json` tells it. Reads the whole of it.
std::string CheckAsJSON(const orvcapsule::CapsuleEntry& entry);

} // namespace zelt
