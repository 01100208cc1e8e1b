#pragma once

#include <capsule/UIString.h>

#include <kinlet/Color.h>
#include <kinlet/Spreadsheet.h>
#include <kinlet/Units.h>

#include <cstdint>
#include <variant>
#include <vector>

namespace orvcapsule {

using kinlet::ColorRGBA;
/// A point of two doubles, in pixels of the template's composition.
using Point2D = kinlet::PointF;

/// The value of a client control. The order of the alternatives is part of the interface: readers and writers test
/// the index.
using ControlValue = std::variant<UTF16String,              // 0: media (the cache id)
                                  Point2D,                  // 1: 2D point
                                  ColorRGBA,                // 2: colour
                                  std::int32_t,             // 3: menu (the selected entry)
                                  float,                    // 4
                                  double,                   // 5: slider, angle
                                  bool,                     // 6: check box
                                  std::vector<double>,      // 7: scale
                                  UIString,                 // 8: text, comment
                                  std::vector<UTF16String>, // 9: group, group drop zone (the members' ids)
                                  kinlet::SpreadsheetValue  // 10: spreadsheet
                                  >;

} // namespace orvcapsule
