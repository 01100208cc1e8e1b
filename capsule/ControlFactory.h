#pragma once

#include <capsule/ControlKinds.h>

#include <memory>
#include <vector>

/// Makes client controls. Every function takes the control's id, its label and its properties first; the new control
/// is visible and its tooltip and suffix are empty. Thread-safe; fails only for lack of memory.
namespace orvcapsule::factory {

using ControlPtr = std::shared_ptr<ClientControl>;

ORVCAPSULE_API ControlPtr CreateCheckboxControl(const UTF16String& id, const UIString& name,
                                                const ControlProperties& properties, bool value);
ORVCAPSULE_API ControlPtr CreateSliderControl(const UTF16String& id, const UIString& name,
                                              const ControlProperties& properties, double minimum, double maximum,
                                              double value);
ORVCAPSULE_API ControlPtr CreateAngleControl(const UTF16String& id, const UIString& name,
                                             const ControlProperties& properties, double value);
ORVCAPSULE_API ControlPtr CreateColorControl(const UTF16String& id, const UIString& name,
                                             const ControlProperties& properties, const ColorRGBA& value);
ORVCAPSULE_API ControlPtr CreatePoint2DControl(const UTF16String& id, const UIString& name,
                                               const ControlProperties& properties, const Point2D& value);
ORVCAPSULE_API ControlPtr CreateStringControl(const UTF16String& id, const UIString& name,
                                              const ControlProperties& properties, const UIString& text,
                                              const kinlet::SourceTextFontEditInfo& fontEditInfo,
                                              const AlternateRectInfo& alternateRectInfo,
                                              kinlet::ESourceTextOverrideType overrideType);
ORVCAPSULE_API ControlPtr CreateCommentControl(const UTF16String& id, const UIString& name,
                                               const ControlProperties& properties, const UIString& text);
ORVCAPSULE_API ControlPtr CreateScaleControl(const UTF16String& id, const UIString& name,
                                             const ControlProperties& properties, bool linked, std::int32_t dimensions,
                                             const std::vector<double>& values);
ORVCAPSULE_API ControlPtr CreateGroupControl(const UTF16String& id, const UIString& name,
                                             const ControlProperties& properties,
                                             const std::vector<UTF16String>& members, bool expanded);
ORVCAPSULE_API ControlPtr CreateGroupDropZoneControl(const UTF16String& id, const UIString& name,
                                                     const ControlProperties& properties,
                                                     const std::vector<UTF16String>& members);
ORVCAPSULE_API ControlPtr CreateMenuControl(const UTF16String& id, const UIString& name,
                                            const ControlProperties& properties, std::int32_t selected,
                                            const std::vector<UIString>& entries);
ORVCAPSULE_API ControlPtr CreateMediaControl(const UTF16String& id, const UIString& name,
                                             const ControlProperties& properties, bool expanded,
                                             const kinlet::MediaReplacementProperties& replacement,
                                             const UTF16String& cacheID);
ORVCAPSULE_API ControlPtr CreateSpreadsheetControl(const UTF16String& id, const UIString& name,
                                                   const ControlProperties& properties, std::uint32_t minRows,
                                                   std::uint32_t maxRows,
                                                   const std::vector<SpreadsheetColumnInfoLoc>& columns,
                                                   const kinlet::SpreadsheetValue& value);

/// Makes an independent copy of a control, with the same class, settings and value. Copies of a `Capsule` share their
/// controls: copy a control before you change it in one of these records only.
ORVCAPSULE_API ControlPtr CloneControl(const ClientControl& control);

} // namespace orvcapsule::factory
