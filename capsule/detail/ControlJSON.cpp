#include <capsule/detail/ControlJSON.h>

#include <capsule/detail/ControlTables.h>

#include <algorithm>
#include <array>

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

// Long lists are read on several workers at a time, so nothing here may keep state between two controls.
// The settings after the shared three are placeholders that the table's required keys replace.
template <class Control, const auto& Table, class... Settings>
ControlPtr ReadAs(const JSONNode& node, Settings... settings)
{
    const bool isLabelled = node.Find(CAPSULE_CONTROL_UINAME_STR) != nullptr;
    auto control =
        std::make_shared<Control>(UTF16String(), isLabelled ? NoText() : UIString(), ControlProperties(), settings...);
    json::TableWalker<Control, Table>::Read(node, *control, ControlTables::Unknown(*control));
    return control;
}

// A control whose class lacks the settings of its type has no form, like one whose value is not of its kind.
template <class Control, const auto& Table>
void WriteAs(JSONSink& sink, const ClientControl& control)
{
    const auto& own = dynamic_cast<const Control&>(control);
    json::TableWalker<Control, Table>::Write(sink, own, ControlTables::Unknown(own));
}

// What is done with a control of one type.
struct Kind {
    ClientControlType type;
    ControlPtr (*read)(const JSONNode&);
    void (*check)(const JSONNode&);
    void (*write)(JSONSink&, const ClientControl&);
};

template <class Control, const auto& Table, class Written = Control>
constexpr Kind KindOf(ClientControlType type, ControlPtr (*read)(const JSONNode&))
{
    return {type, read, json::TableWalker<Control, Table>::Check, WriteAs<Written, Table>};
}

using Type = ClientControlType;
using Node = const JSONNode&;

// Kinds without settings of their own are written whatever the control's class. A document holds the shared part of a
// group drop zone only, of which no drop zone could be made again: it has no row and reads as none.
constexpr std::array kKinds = {
    KindOf<CheckboxControl, kCheckbox, ClientControl>(
        Type::kCheckbox, [](Node node) { return ReadAs<CheckboxControl, kCheckbox>(node, false); }),
    KindOf<SliderControl, kSlider>(Type::kSlider,
                                   [](Node node) { return ReadAs<SliderControl, kSlider>(node, 0.0, 0.0, 0.0); }),
    KindOf<AngleControl, kAngle, ClientControl>(Type::kAngle,
                                                [](Node node) { return ReadAs<AngleControl, kAngle>(node, 0.0); }),
    KindOf<ColorControl, kColor, ClientControl>(
        Type::kColor, [](Node node) { return ReadAs<ColorControl, kColor>(node, ColorRGBA()); }),
    KindOf<Point2DControl, kPoint2D, ClientControl>(
        Type::kPoint2D, [](Node node) { return ReadAs<Point2DControl, kPoint2D>(node, Point2D()); }),
    KindOf<StringControl, kText>(Type::kText,
                                 [](Node node) {
                                     return ReadAs<StringControl, kText>(
                                         node, NoText(), kinlet::SourceTextFontEditInfo(), AlternateRectInfo(),
                                         kinlet::ESourceTextOverrideType());
                                 }),
    KindOf<CommentControl, kComment, ClientControl>(
        Type::kComment, [](Node node) { return ReadAs<CommentControl, kComment>(node, NoText()); }),
    KindOf<ScaleControl, kScale>(
        Type::kScale, [](Node node) { return ReadAs<ScaleControl, kScale>(node, false, 0, std::vector<double>()); }),
    KindOf<GroupControl, kGroup>(
        Type::kGroup, [](Node node) { return ReadAs<GroupControl, kGroup>(node, std::vector<UTF16String>(), false); }),
    KindOf<MenuControl, kMenu>(Type::kMenu,
                               [](Node node) { return ReadAs<MenuControl, kMenu>(node, 0, std::vector<UIString>()); }),
    KindOf<MediaControl, kMedia>(Type::kMedia,
                                 [](Node node) {
                                     return ReadAs<MediaControl, kMedia>(
                                         node, false, kinlet::MediaReplacementProperties(), UTF16String());
                                 }),
    KindOf<SpreadsheetControl, kSpreadsheet>(Type::kSpreadsheet,
                                             [](Node node) {
                                                 return ReadAs<SpreadsheetControl, kSpreadsheet>(
                                                     node, 0U, 0U, std::vector<SpreadsheetColumnInfoLoc>(),
                                                     kinlet::SpreadsheetValue());
                                             }),
};

const Kind* FindKind(ClientControlType type)
{
    const auto* const found =
        std::find_if(kKinds.begin(), kKinds.end(), [type](const Kind& kind) { return kind.type == type; });
    return found != kKinds.end() ? found : nullptr;
}

// The kind that a control's object names, or null. The keys that every control has are required of those that are
// passed over, too: a control of an unknown kind is passed over, one that lacks what every control has is damage.
const Kind* KindNamedBy(const JSONNode& node)
{
    ClientControlType type{};
    const JSONNode* typeNode = node.Find(CAPSULE_CONTROL_TYPE_STR);
    const Kind* const kind =
        typeNode != nullptr && json::Codec<ClientControlType>::Read(*typeNode, type) ? FindKind(type) : nullptr;
    if (kind == nullptr) {
        json::TableWalker<ClientControl, kBeforeType>::Check(node);
        if (typeNode == nullptr) {
            throw orvcore::serialization::missing_key_exception(CAPSULE_CONTROL_TYPE_STR);
        }
    }
    return kind;
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

bool ControlListCodec::Check(const JSONNode& node)
{
    return json::Codec<List>::Check(node);
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
    const capsule::Kind* const kind = node.IsObject() ? capsule::KindNamedBy(node) : nullptr;
    out = kind != nullptr ? kind->read(node) : nullptr;
    return true;
}

bool Codec<std::shared_ptr<orvcapsule::ClientControl>>::Check(const JSONNode& node)
{
    if (const capsule::Kind* const kind = node.IsObject() ? capsule::KindNamedBy(node) : nullptr) {
        kind->check(node);
    }
    return true;
}

void Codec<std::shared_ptr<orvcapsule::ClientControl>>::Write(JSONSink& sink,
                                                              const std::shared_ptr<orvcapsule::ClientControl>& value)
{
    if (value == nullptr) {
        return sink.Null();
    }
    const capsule::Kind* const kind = capsule::FindKind(value->GetType());
    const auto write = kind != nullptr ? kind->write : capsule::WriteAs<orvcapsule::ClientControl, capsule::kCommon>;
    write(sink, *value);
}

} // namespace orvcore::serialization::detail
