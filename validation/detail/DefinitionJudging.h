#pragma once

#include <validation/detail/FindingList.h>

#include <string>
#include <string_view>

namespace orvcapsule::detail {

/// Judges the text of a definition. May throw std::bad_alloc only.
void JudgeDefinition(std::string_view text, FindingList& findings);

/// The codes of findings for which readers refuse a definition as a whole.
bool IsRefusal(std::string_view code) noexcept;

/// The "apiVersion" of a definition's text, of one that is refused too; empty when it holds none.
std::string DeclaredVersion(std::string_view text);

} // namespace orvcapsule::detail
