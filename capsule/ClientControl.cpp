#include <capsule/ClientControl.h>

namespace orvcapsule {

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

} // namespace orvcapsule
