#pragma once

#include <tools/zelt/support/Definition.h>

#include <capsule/ControlKinds.h>

#include <memory>
#include <string>
#include <vector>

namespace zelt {

/// A control as a document holds it.
struct DocumentControl {
    std::string id;
    std::string label;                                 ///< names it for people, "control 3 (\"size\")"
    std::shared_ptr<orvcapsule::ClientControl> record; ///< null for a kind that readers skip, or one that lacks a key
};

/// Adds what does not fit together: ids that repeat, group members that name no control, a slider's value outside its
/// range, a menu's index outside its entries.
void CheckControls(const std::vector<DocumentControl>& controls, Problems& problems);

} // namespace zelt
