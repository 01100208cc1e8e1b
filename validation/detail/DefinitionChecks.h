#pragma once

#include <validation/detail/DefinitionReport.h>

#include <vector>

// The checks of one definition that was read. Each takes values that are usable and leaves the others to CheckShape.
namespace orvcapsule::detail {

/// A localised text that a check met.
struct MetText {
    enum class Role { Name, Label, Value };
    PlacedValue value;
    Role role; ///< only a value may be empty
};

/// Every value by itself, against the schema: keys that are missing, unknown or repeated, values of a wrong type,
/// values that no host knows. Returns the localised texts on the way.
std::vector<MetText> CheckShape(const PlacedValue& root, DefinitionReport& report);

/// What the top level says of the template: its identity, version, name, platforms, fonts, tags.
void CheckTopLevel(std::string_view text, const PlacedValue& root, DefinitionReport& report);

/// Each composition's numbers.
void CheckCompositions(const PlacedValue& root, DefinitionReport& report);

/// The controls: ids, labels, values within their ranges, groups.
void CheckControls(const PlacedValue& root, DefinitionReport& report);

/// One spreadsheet's limits, columns and cells.
void CheckSheet(const PlacedValue& control, DefinitionReport& report);

/// The languages of texts: locales of a wrong form or repeated, empty and missing texts.
void CheckTexts(const std::vector<MetText>& texts, DefinitionReport& report);

/// A locale that is a key of a map. @return false when it has a wrong form, which is told
bool CheckLocaleKey(const PlacedValue& member, DefinitionReport& report);

} // namespace orvcapsule::detail
