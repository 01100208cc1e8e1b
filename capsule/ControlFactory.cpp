#include <capsule/ControlFactory.h>

namespace orvcapsule::factory {

ControlPtr CreateCheckboxControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                                 bool value)
{
    return std::make_shared<CheckboxControl>(id, name, properties, value);
}

ControlPtr CreateSliderControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                               double minimum, double maximum, double value)
{
    return std::make_shared<SliderControl>(id, name, properties, minimum, maximum, value);
}

ControlPtr CreateAngleControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                              double value)
{
    return std::make_shared<AngleControl>(id, name, properties, value);
}

ControlPtr CreateColorControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                              const ColorRGBA& value)
{
    return std::make_shared<ColorControl>(id, name, properties, value);
}

ControlPtr CreatePoint2DControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                                const Point2D& value)
{
    return std::make_shared<Point2DControl>(id, name, properties, value);
}

ControlPtr CreateStringControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                               const UIString& text, const kinlet::SourceTextFontEditInfo& fontEditInfo,
                               const AlternateRectInfo& alternateRectInfo, kinlet::ESourceTextOverrideType overrideType)
{
    return std::make_shared<StringControl>(id, name, properties, text, fontEditInfo, alternateRectInfo, overrideType);
}

ControlPtr CreateCommentControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                                const UIString& text)
{
    return std::make_shared<CommentControl>(id, name, properties, text);
}

ControlPtr CreateScaleControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                              bool linked, std::int32_t dimensions, const std::vector<double>& values)
{
    return std::make_shared<ScaleControl>(id, name, properties, linked, dimensions, values);
}

ControlPtr CreateGroupControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                              const std::vector<UTF16String>& members, bool expanded)
{
    return std::make_shared<GroupControl>(id, name, properties, members, expanded);
}

ControlPtr CreateGroupDropZoneControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                                      const std::vector<UTF16String>& members)
{
    return std::make_shared<GroupDropZoneControl>(id, name, properties, members);
}

ControlPtr CreateMenuControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                             std::int32_t selected, const std::vector<UIString>& entries)
{
    return std::make_shared<MenuControl>(id, name, properties, selected, entries);
}

ControlPtr CreateMediaControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                              bool expanded, const kinlet::MediaReplacementProperties& replacement,
                              const UTF16String& cacheID)
{
    return std::make_shared<MediaControl>(id, name, properties, expanded, replacement, cacheID);
}

ControlPtr CreateSpreadsheetControl(const UTF16String& id, const UIString& name, const ControlProperties& properties,
                                    std::uint32_t minRows, std::uint32_t maxRows,
                                    const std::vector<SpreadsheetColumnInfoLoc>& columns,
                                    const kinlet::SpreadsheetValue& value)
{
    return std::make_shared<SpreadsheetControl>(id, name, properties, minRows, maxRows, columns, value);
}

namespace {

// The first kind that fits is taken. ClientControl must come last: every control is one, and a copy of the base alone
// would lose its kind's settings. A class of a host's own that derives from a kind is copied as that kind.
template <class... Kinds>
ControlPtr CloneAsOneOf(const ClientControl& control)
{
    ControlPtr clone;
    const auto cloneAs = [&]<class Kind>(const Kind* own) {
        clone = own != nullptr ? std::make_shared<Kind>(*own) : nullptr;
        return own != nullptr;
    };
    static_cast<void>((cloneAs(dynamic_cast<const Kinds*>(&control)) || ...));
    return clone;
}

} // namespace

ControlPtr CloneControl(const ClientControl& control)
{
    return CloneAsOneOf<CheckboxControl, SliderControl, AngleControl, ColorControl, Point2DControl, StringControl,
                        CommentControl, ScaleControl, GroupControl, GroupDropZoneControl, MenuControl, MediaControl,
                        SpreadsheetControl, ClientControl>(control);
}

} // namespace orvcapsule::factory
