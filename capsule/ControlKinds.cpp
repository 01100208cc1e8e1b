#include <capsule/ControlKinds.h>

// Each class has its destructor here although it is the default one: so its virtual table and type information lie in
// this library alone, and a dynamic_cast in the writer finds the class of a control that a host has made.

namespace orvcapsule {

CheckboxControl::CheckboxControl(UTF16String id, UIString name, ControlProperties properties, bool value)
    : ClientControl(ClientControlType::kCheckbox, std::move(id), std::move(name), properties, value)
{
}
CheckboxControl::~CheckboxControl() = default;

SliderControl::SliderControl(UTF16String id, UIString name, ControlProperties properties, double minimum,
                             double maximum, double value)
    : ClientControl(ClientControlType::kSlider, std::move(id), std::move(name), properties, value)
    , minimum_(minimum)
    , maximum_(maximum)
{
}
SliderControl::~SliderControl() = default;

AngleControl::AngleControl(UTF16String id, UIString name, ControlProperties properties, double value)
    : ClientControl(ClientControlType::kAngle, std::move(id), std::move(name), properties, value)
{
}
AngleControl::~AngleControl() = default;

ColorControl::ColorControl(UTF16String id, UIString name, ControlProperties properties, ColorRGBA value)
    : ClientControl(ClientControlType::kColor, std::move(id), std::move(name), properties, value)
{
}
ColorControl::~ColorControl() = default;

Point2DControl::Point2DControl(UTF16String id, UIString name, ControlProperties properties, Point2D value)
    : ClientControl(ClientControlType::kPoint2D, std::move(id), std::move(name), properties, value)
{
}
Point2DControl::~Point2DControl() = default;

StringControl::StringControl(UTF16String id, UIString name, ControlProperties properties, UIString text,
                             kinlet::SourceTextFontEditInfo fontEditInfo, AlternateRectInfo alternateRectInfo,
                             kinlet::ESourceTextOverrideType overrideType)
    : ClientControl(ClientControlType::kText, std::move(id), std::move(name), properties, std::move(text))
    , fontEditInfo_(std::move(fontEditInfo))
    , alternateRectInfo_(alternateRectInfo)
    , overrideType_(overrideType)
{
}
StringControl::~StringControl() = default;

CommentControl::CommentControl(UTF16String id, UIString name, ControlProperties properties, UIString text)
    : ClientControl(ClientControlType::kComment, std::move(id), std::move(name), properties, std::move(text))
{
}
CommentControl::~CommentControl() = default;

ScaleControl::ScaleControl(UTF16String id, UIString name, ControlProperties properties, bool linked,
                           std::int32_t dimensions, std::vector<double> values)
    : ClientControl(ClientControlType::kScale, std::move(id), std::move(name), properties, std::move(values))
    , linked_(linked)
    , dimensions_(dimensions)
{
}
ScaleControl::~ScaleControl() = default;

GroupControl::GroupControl(UTF16String id, UIString name, ControlProperties properties,
                           std::vector<UTF16String> members, bool expanded)
    : ClientControl(ClientControlType::kGroup, std::move(id), std::move(name), properties, std::move(members))
    , expanded_(expanded)
{
}
GroupControl::~GroupControl() = default;

GroupDropZoneControl::GroupDropZoneControl(UTF16String id, UIString name, ControlProperties properties,
                                           std::vector<UTF16String> members)
    : ClientControl(ClientControlType::kGroupDropZone, std::move(id), std::move(name), properties, std::move(members))
{
}
GroupDropZoneControl::~GroupDropZoneControl() = default;

MenuControl::MenuControl(UTF16String id, UIString name, ControlProperties properties, std::int32_t selected,
                         std::vector<UIString> entries)
    : ClientControl(ClientControlType::kMenu, std::move(id), std::move(name), properties, selected)
    , entries_(std::move(entries))
{
}
MenuControl::~MenuControl() = default;

MediaControl::MediaControl(UTF16String id, UIString name, ControlProperties properties, bool expanded,
                           kinlet::MediaReplacementProperties replacement, UTF16String cacheID)
    : ClientControl(ClientControlType::kMedia, std::move(id), std::move(name), properties, std::move(cacheID))
    , expanded_(expanded)
    , replacement_(std::move(replacement))
{
}
MediaControl::~MediaControl() = default;

SpreadsheetControl::SpreadsheetControl(UTF16String id, UIString name, ControlProperties properties,
                                       std::uint32_t minRows, std::uint32_t maxRows,
                                       std::vector<SpreadsheetColumnInfoLoc> columns, kinlet::SpreadsheetValue value)
    : ClientControl(ClientControlType::kSpreadsheet, std::move(id), std::move(name), properties, std::move(value))
    , minRows_(minRows)
    , maxRows_(maxRows)
    , columns_(std::move(columns))
{
}
SpreadsheetControl::~SpreadsheetControl() = default;

} // namespace orvcapsule
