#pragma once

#include <capsule/ControlValue.h>
#include <capsule/UIString.h>

#include <cstdint>
#include <memory>

namespace orvcapsule {

/// The kind of a client control. The numbers are stored in documents; 7 is unassigned.
enum class ClientControlType : std::int32_t {
    kCheckbox = 1,
    kSlider = 2,
    kAngle = 3,
    kColor = 4,
    kPoint2D = 5,
    kText = 6,
    kComment = 8,
    kScale = 9,
    kGroup = 10,
    kSpreadsheet = 11,
    kGroupDropZone = 12,
    kMenu = 13,
    kMedia = 14,
};

/// Properties that every control has.
struct ControlProperties {
    bool canAnimate = false; ///< whether the control's parameter may be animated in the host
    bool operator==(const ControlProperties&) const = default;
};

namespace serialization::detail {
struct ControlTables;
}

/// One editable parameter of a template: what all kinds share. A subclass per kind (`ControlKinds.h`) adds that
/// kind's settings; the functions of `orvcapsule::factory` make them.
///
/// Nothing is validated: a slider's value may lie outside its range and `SetVal` takes any alternative; the caller
/// keeps the value consistent with the kind. Not synchronised: concurrent reads are safe.
///
/// The tooltip and the suffix live in memory only: a document always holds empty ones.
class ORVCAPSULE_API ClientControl {
public:
    ClientControl(ClientControlType type, UTF16String id, UIString name, ControlProperties properties,
                  ControlValue value);
    ClientControl(const ClientControl&) = default;
    ClientControl& operator=(const ClientControl&) = default;
    virtual ~ClientControl();

    ClientControlType GetType() const noexcept
    {
        return type_;
    }

    /// The control's identity within its template.
    UTF16String GetID() const
    {
        return id_;
    }
    void SetID(const UTF16String& id)
    {
        id_ = id;
    }

    /// The label for the application language, by the rule of `UIString::GetString`.
    UTF16String GetName() const
    {
        return locName_.GetString();
    }
    /// Sets the label for the application language only.
    void SetName(const UTF16String& name)
    {
        locName_.SetString(name);
    }
    /// The label in all languages; never null, valid as long as the control is.
    const UIString* GetLocName() const noexcept
    {
        return &locName_;
    }
    void SetLocName(const UIString& name)
    {
        locName_ = name;
    }

    /// The tooltip for the application language.
    UTF16String GetToolTip() const
    {
        return toolTip_.GetString();
    }
    /// Sets the tooltip for the application language only.
    void SetToolTip(const UTF16String& text)
    {
        toolTip_.SetString(text);
    }

    bool GetHidden() const noexcept
    {
        return hidden_;
    }
    void SetHidden(bool hidden) noexcept
    {
        hidden_ = hidden;
    }

    ControlProperties GetProperties() const noexcept
    {
        return properties_;
    }

    /// A copy of the value.
    ControlValue GetVal() const
    {
        return value_;
    }
    /// Takes any alternative; one that is not of the control's kind shows only when the control is written. Literals
    /// choose by their own type: a text control wants `UIString(u"Anna")`, a slider `75.0` and not `75`.
    void SetVal(const ControlValue& value)
    {
        value_ = value;
    }
    /// Takes the alternative of the control's kind only (`ControlKinds.h`), so that a mistake shows where it is made.
    /// @throws foreign_value_exception  for any other, the value as it was
    void SetValOfKind(const ControlValue& value);

private:
    friend struct serialization::detail::ControlTables;

    ClientControlType type_;
    UTF16String id_;
    UIString locName_;
    UIString suffix_;
    UIString toolTip_;
    bool hidden_ = false;
    ControlProperties properties_;
    ControlValue value_;
};

} // namespace orvcapsule
