#include <capsule/ClientControl.h>

#include <capsule/ForeignValue.h>

namespace orvcapsule {

namespace {

// Whether a value is the alternative that a kind keeps. Numbers without a kind have none to keep to.
// The same alternatives as in ControlKinds.h and as the tables read and write; a new kind needs a row in each.
bool IsOfKind(ClientControlType type, const ControlValue& value)
{
    switch (type) {
    case ClientControlType::kCheckbox:
        return std::holds_alternative<bool>(value);
    case ClientControlType::kSlider:
    case ClientControlType::kAngle:
        return std::holds_alternative<double>(value);
    case ClientControlType::kColor:
        return std::holds_alternative<ColorRGBA>(value);
    case ClientControlType::kPoint2D:
        return std::holds_alternative<Point2D>(value);
    case ClientControlType::kText:
    case ClientControlType::kComment:
        return std::holds_alternative<UIString>(value);
    case ClientControlType::kScale:
        return std::holds_alternative<std::vector<double>>(value);
    case ClientControlType::kGroup:
    case ClientControlType::kGroupDropZone:
        return std::holds_alternative<std::vector<UTF16String>>(value);
    case ClientControlType::kMenu:
        return std::holds_alternative<std::int32_t>(value);
    case ClientControlType::kMedia:
        return std::holds_alternative<UTF16String>(value);
    case ClientControlType::kSpreadsheet:
        return std::holds_alternative<kinlet::SpreadsheetValue>(value);
    }
    return true;
}

} // namespace

ClientControl::ClientControl(ClientControlType type, UTF16String id, UIString name, ControlProperties properties,
                             ControlValue value)
    : type_(type)
    , id_(std::move(id))
    , locName_(std::move(name))
    , properties_(properties)
    , value_(std::move(value))
{
}

ClientControl::~ClientControl() = default;

void ClientControl::SetValOfKind(const ControlValue& value)
{
    if (!IsOfKind(type_, value)) {
        throw foreign_value_exception(id_);
    }
    value_ = value;
}

} // namespace orvcapsule
