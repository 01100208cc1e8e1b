#include <capsule/detail/ControlJSON.h>

#include <capsule/detail/ControlTables.h>

namespace orvcapsule::serialization::detail {

namespace {

using ControlPtr = std::shared_ptr<ClientControl>;

// The tables have to be objects of static storage to serve as template arguments.
constexpr auto kBeforeType = ControlTables::BeforeType();
constexpr auto kCommon = ControlTables::Common();
constexpr auto kCheckbox = ControlTables::Kind(ControlTables::Value<bool>());
constexpr auto kSlider = ControlTables::Slider();
constexpr auto kAngle = ControlTables::Kind(ControlTables::Value<double>());
constexpr auto kColor = ControlTables::Kind(ControlTables::Value<ColorRGBA>());
constexpr auto kPoint2D = ControlTables::Kind(ControlTables::Value<Point2D>());
constexpr auto kText = ControlTables::Text();
constexpr auto kComment = ControlTables::Kind(ControlTables::Value<UIString>());
constexpr auto kScale = ControlTables::Scale();
constexpr auto kGroup = ControlTables::Group();
constexpr auto kMenu = ControlTables::Menu();
constexpr auto kMedia = ControlTables::Media();
constexpr auto kSpreadsheet = ControlTables::Spreadsheet();

// A text without entries, where a control is built before its texts are read: a default-built one would look the
// application language up.
UIString NoText()
{
    return UIString(std::vector<LocStrPair>());
}

// One control of a kind in each direction. The settings after the shared three are placeholders that the table's
// required keys replace.
// Long lists are read on several workers at a time, so nothing here may keep state between two controls.
template <class Control, const auto& Table>
struct KindCodec {
    template <class... Settings>
    static ControlPtr Read(const JSONNode& node, Settings... settings)
    {
        const bool isLabelled = node.Find(CAPSULE_CONTROL_UINAME_STR) != nullptr;
        auto control = std::make_shared<Control>(UTF16String(), isLabelled ? NoText() : UIString(), ControlProperties(),
                                                 settings...);
        json::TableWalker<Control, Table>::Read(node, *control, ControlTables::Unknown(*control));
        return control;
    }

    // A control whose class lacks the settings of its type has no form, like one whose value is not of its kind.
    static void Write(JSONSink& sink, const ClientControl& control)
    {
        const auto& own = dynamic_cast<const Control&>(control);
        json::TableWalker<Control, Table>::Write(sink, own, ControlTables::Unknown(own));
    }
};

ControlPtr ReadControl(const JSONNode& node, ClientControlType type)
{
    switch (type) {
    case ClientControlType::kCheckbox:
        return KindCodec<CheckboxControl, kCheckbox>::Read(node, false);
    case ClientControlType::kSlider:
        return KindCodec<SliderControl, kSlider>::Read(node, 0.0, 0.0, 0.0);
    case ClientControlType::kAngle:
        return KindCodec<AngleControl, kAngle>::Read(node, 0.0);
    case ClientControlType::kColor:
        return KindCodec<ColorControl, kColor>::Read(node, ColorRGBA());
    case ClientControlType::kPoint2D:
        return KindCodec<Point2DControl, kPoint2D>::Read(node, Point2D());
    case ClientControlType::kText:
        return KindCodec<StringControl, kText>::Read(node, NoText(), kinlet::SourceTextFontEditInfo(),
                                                     AlternateRectInfo(), kinlet::ESourceTextOverrideType());
    case ClientControlType::kComment:
        return KindCodec<CommentControl, kComment>::Read(node, NoText());
    case ClientControlType::kScale:
        return KindCodec<ScaleControl, kScale>::Read(node, false, 0, std::vector<double>());
    case ClientControlType::kGroup:
        return KindCodec<GroupControl, kGroup>::Read(node, std::vector<UTF16String>(), false);
    case ClientControlType::kMenu:
        return KindCodec<MenuControl, kMenu>::Read(node, 0, std::vector<UIString>());
    case ClientControlType::kMedia:
        return KindCodec<MediaControl, kMedia>::Read(node, false, kinlet::MediaReplacementProperties(), UTF16String());
    case ClientControlType::kSpreadsheet:
        return KindCodec<SpreadsheetControl, kSpreadsheet>::Read(node, 0U, 0U, std::vector<SpreadsheetColumnInfoLoc>(),
                                                                 kinlet::SpreadsheetValue());
    // A document holds the shared part of such a control only, of which no drop zone could be made again: it reads as
    // none.
    case ClientControlType::kGroupDropZone:
        break;
    }
    return nullptr;
}

// Kinds without settings of their own are written whatever the control's class.
void WriteControl(JSONSink& sink, const ClientControl& control)
{
    switch (control.GetType()) {
    case ClientControlType::kCheckbox:
        return KindCodec<ClientControl, kCheckbox>::Write(sink, control);
    case ClientControlType::kSlider:
        return KindCodec<SliderControl, kSlider>::Write(sink, control);
    case ClientControlType::kAngle:
        return KindCodec<ClientControl, kAngle>::Write(sink, control);
    case ClientControlType::kColor:
        return KindCodec<ClientControl, kColor>::Write(sink, control);
    case ClientControlType::kPoint2D:
        return KindCodec<ClientControl, kPoint2D>::Write(sink, control);
    case ClientControlType::kText:
        return KindCodec<StringControl, kText>::Write(sink, control);
    case ClientControlType::kComment:
        return KindCodec<ClientControl, kComment>::Write(sink, control);
    case ClientControlType::kScale:
        return KindCodec<ScaleControl, kScale>::Write(sink, control);
    case ClientControlType::kGroup:
        return KindCodec<GroupControl, kGroup>::Write(sink, control);
    case ClientControlType::kMenu:
        return KindCodec<MenuControl, kMenu>::Write(sink, control);
    case ClientControlType::kMedia:
        return KindCodec<MediaControl, kMedia>::Write(sink, control);
    case ClientControlType::kSpreadsheet:
        return KindCodec<SpreadsheetControl, kSpreadsheet>::Write(sink, control);
    case ClientControlType::kGroupDropZone:
        break;
    }
    json::TableWalker<ClientControl, kCommon>::Write(sink, control, nullptr);
}

} // namespace

bool ControlListCodec::Read(const JSONNode& node, List& out)
{
    List read;
    if (!json::Codec<List>::Read(node, read)) {
        return false;
    }
    // Elements that are no control of a known kind have been read as null pointers, which hosts need not ask for.
    read.erase(std::remove(read.begin(), read.end(), nullptr), read.end());
    out = std::move(read);
    return true;
}

void ControlListCodec::Write(JSONSink& sink, const List& value)
{
    // The list is copied only when a host put a null pointer into it.
    if (std::find(value.begin(), value.end(), nullptr) == value.end()) {
        return json::Codec<List>::Write(sink, value);
    }
    List controls = value;
    controls.erase(std::remove(controls.begin(), controls.end(), nullptr), controls.end());
    json::Codec<List>::Write(sink, controls);
}

} // namespace orvcapsule::serialization::detail

namespace orvcore::serialization::detail {

namespace capsule = orvcapsule::serialization::detail;

bool Codec<std::shared_ptr<orvcapsule::ClientControl>>::Read(const JSONNode& node,
                                                             std::shared_ptr<orvcapsule::ClientControl>& out)
{
    out = nullptr;
    if (!node.IsObject()) {
        return true;
    }
    orvcapsule::ClientControlType type{};
    const JSONNode* typeNode = node.Find(orvcapsule::CAPSULE_CONTROL_TYPE_STR);
    if (typeNode != nullptr && Codec<orvcapsule::ClientControlType>::Read(*typeNode, type)) {
        out = capsule::ReadControl(node, type);
    }
    if (out == nullptr) {
        // The keys that every control has are required of those that are passed over, too.
        // A control of an unknown kind is passed over, one that lacks what every control has is damage.
        orvcapsule::ClientControl scratch({}, {}, {}, {}, {});
        TableWalker<orvcapsule::ClientControl, capsule::kBeforeType>::Read(node, scratch, nullptr);
        if (typeNode == nullptr) {
            throw missing_key_exception(orvcapsule::CAPSULE_CONTROL_TYPE_STR);
        }
    }
    return true;
}

void Codec<std::shared_ptr<orvcapsule::ClientControl>>::Write(JSONSink& sink,
                                                              const std::shared_ptr<orvcapsule::ClientControl>& value)
{
    if (value == nullptr) {
        sink.Null();
    } else {
        capsule::WriteControl(sink, *value);
    }
}

} // namespace orvcore::serialization::detail
