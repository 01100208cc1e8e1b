#pragma once

#include <capsule/ClientControl.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zelt {

/// A control that a new template is to have.
struct NewControl {
    std::shared_ptr<orvcapsule::ClientControl> control;
    std::optional<std::string> value; ///< to be set as `zelt set --control` sets it
};

/// Makes a control of "KIND:ID[:LABEL][=VALUE]". The kinds are checkbox, slider (VALUE,MIN,MAX), angle, color, point,
/// text, comment, scale, menu (ENTRY|ENTRY...), group (ID,ID...) and media. Without a label the id is shown.
/// @param locale  of the label and of texts
/// @throws UsageError  that says what is wrong with it
NewControl ParseNewControl(std::string_view form, const std::string& locale);

} // namespace zelt
