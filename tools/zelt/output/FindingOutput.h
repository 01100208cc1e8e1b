#pragma once

#include <validation/Finding.h>

#include <string>

namespace zelt {

/// Whether a template with these findings is good: without errors or, when `isStrict`, without any finding.
bool IsGood(const orvcapsule::Findings& findings, bool isStrict);

/// What `check` says of a file, on one line or several: "FILE: OK", or "FILE: BAD: " and what makes it bad; then a line
/// for each warning that does not. Safe to show, without the last line feed.
std::string FindingsText(const std::string& file, const orvcapsule::Findings& findings, bool isStrict);

/// The same as a JSON object.
std::string FindingsJSON(const std::string& file, const orvcapsule::Findings& findings, bool isStrict);

/// One finding as a sentence with its place and what was likely meant.
std::string FindingText(const orvcapsule::Finding& finding);

} // namespace zelt
