#pragma once

#include <kinlet/SourceInfo.h>

#include <string>

namespace zelt {

/// A composition with square pixels and without sound.
/// @param frame     "1920x1080"
/// @param rate      frames a second: "25", "12.5", "30000/1001"; "29.97" and its like are the 1000/1001 ones
/// @param duration  "5s", "500ms" or "125f"
/// @throws UsageError  that names all of the three that are missing or wrong
kinlet::SourceInfo MakeComposition(const std::string& frame, const std::string& rate, const std::string& duration);

} // namespace zelt
