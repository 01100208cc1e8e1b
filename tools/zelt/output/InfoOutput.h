#pragma once

#include <tools/zelt/support/Template.h>

#include <string>

namespace zelt {

/// What a template holds as one JSON object on one line. The keys are always the same and in the same order; what is
/// not known of a refused template is null.
std::string InfoAsJSON(const Template& read);

/// What a good template holds, for people; ends with a line feed.
std::string InfoAsText(const Template& read);

} // namespace zelt
