#include <validation/detail/DefinitionChecks.h>
#include <validation/detail/Shape.h>

#include <capsule/DefinitionKeys.h>
#include <orvcore/text/Guid.h>
#include <orvcore/text/NearestName.h>

#include <algorithm>
#include <unordered_set>

namespace orvcapsule::detail {

// Goes through the values of a definition beside the shapes of the schema. The difficult part is to say what a mistake
// costs as readers would have it: the whole definition (a required key of a control), one top-level value (which
// readers ignore), or a value that encloses the broken one (a localised text with a broken entry). Owner carries that
// down, and must be kept in step with the presence of keys in the tables (capsule/detail, platform/kinlet).

namespace {

using orvcore::serialization::JSONKind;
using orvcore::serialization::JSONNode;

// Two readings, because the format has unsigned 64-bit numbers beside signed ones, and neither type holds both ranges.
bool FitsInteger(const JSONNode& node, const Shape& shape)
{
    std::int64_t number = 0;
    if (node.Get(number)) {
        return number >= shape.least && (number < 0 || static_cast<std::uint64_t>(number) <= shape.most);
    }
    std::uint64_t large = 0;
    return node.Get(large) && large <= shape.most;
}

bool FitsNumber(const JSONNode& node, const Shape& shape)
{
    double number = 0;
    return (shape.Allows(Shape::kNumber) && node.Get(number)) ||
           (shape.Allows(Shape::kInteger) && FitsInteger(node, shape));
}

// Whether readers can use the value as far as it is no list or object; what lies in those is judged one by one.
bool Fits(const PlacedValue& value, const Shape& shape)
{
    switch (value->Kind()) {
    case JSONKind::kNull:
        return shape.Allows(Shape::kNull);
    case JSONKind::kBool:
        return shape.Allows(Shape::kBool);
    case JSONKind::kInt64:
    case JSONKind::kUInt64:
    case JSONKind::kDouble:
        return FitsNumber(*value, shape);
    case JSONKind::kString:
        return shape.Allows(Shape::kText) && (shape.name != "guid" || orvcore::Guid::FromString(value.Text()));
    case JSONKind::kArray:
        return shape.Allows(Shape::kList) && value.size() >= shape.fewestItems && value.size() <= shape.mostItems;
    case JSONKind::kObject:
        return shape.Allows(Shape::kObject);
    }
    return false;
}

bool IsChoice(const PlacedValue& value, const Shape& shape)
{
    std::int64_t number = 0;
    const bool isNumber = value->Get(number);
    return std::any_of(shape.choices.begin(), shape.choices.end(), [&](const Shape::Choice& choice) {
        return isNumber ? choice.number == number : choice.text == value.Text();
    });
}

// Choices as texts, those of numbers by their titles.
std::vector<std::string> NamesOf(const Shape& shape)
{
    std::vector<std::string> names;
    for (const Shape::Choice& choice : shape.choices) {
        names.emplace_back(choice.text.empty() ? choice.title : choice.text);
    }
    return names;
}

// What becomes of a value when a part of it is of no use.
struct Owner {
    std::string_view key;  // names the whole
    bool isPassedOver;     // readers act as if it were absent; otherwise they refuse the definition
    std::string_view what; // in the place of a key, for a thing that has none
};

class ShapeWalk {
public:
    explicit ShapeWalk(DefinitionReport& report)
        : report_(report)
    {
    }

    void Judge(const PlacedValue& value, const Shape& shape, const Owner& owner)
    {
        if (!Fits(value, shape)) {
            return TellUnusable(value, shape, owner);
        }
        if (!shape.choices.empty()) {
            JudgeChoice(value, shape);
        }
        if (value->IsObject()) {
            JudgeObject(value, shape, owner);
        }
        for (std::size_t i = 0; value->IsArray() && shape.items != nullptr && i < value.size(); ++i) {
            const bool isControl = shape.items->name == "control";
            Judge(value[i], *shape.items, isControl ? Owner{"", true, "this element of the list"} : owner);
        }
    }

    std::vector<MetText> TakeTexts()
    {
        return std::move(texts_);
    }

private:
    void TellUnusable(const PlacedValue& value, const Shape& shape, const Owner& owner)
    {
        const Severity severity = owner.isPassedOver ? Severity::Warning : Severity::Error;
        const std::string what =
            owner.what.empty() ? "the value of \"" + std::string(owner.key) + '"' : std::string(owner.what);
        std::string wanted = Wanted(shape);
        const std::string text = what + (owner.isPassedOver ? " is passed over: " : " cannot be used: ") +
                                 report_.Found(value) + " stands where " + wanted + " is expected";
        std::string nearest = value->IsString() ? orvcore::NearestName(value.Text(), NamesOf(shape)) : std::string();
        report_.At(value, {severity, owner.isPassedOver ? "IgnoredValue" : "MissingKey", text, std::move(wanted),
                           std::move(nearest)});
    }

    void JudgeChoice(const PlacedValue& value, const Shape& shape)
    {
        const bool isEmpty = value->IsString() && value.Text().empty(); // as good as absent
        if (isEmpty || IsChoice(value, shape) || !report_.HasRoom(Severity::Warning)) {
            return;
        }
        std::string title(shape.title);
        report_.At(value, {Severity::Warning, "UnknownValue",
                           report_.Found(value) + " is not known as \"" + title + '"', Wanted(shape),
                           value->IsString() ? orvcore::NearestName(value.Text(), NamesOf(shape)) : std::string()});
    }

    void JudgeObject(const PlacedValue& object, const Shape& shape, const Owner& owner)
    {
        if (shape.name == "localizedText" && !Meet(object, owner)) {
            return;
        }
        TellRepeated(object);
        const Shape* kind = nullptr;
        if (shape.name == "control" && !FindKind(object, kind)) {
            return;
        }
        for (std::size_t i = 0; i < object.size(); ++i) {
            JudgeMember(object, object[i], shape, kind, owner);
        }
        TellMissing(object, shape, owner);
        if (kind != nullptr) {
            TellMissing(object, *kind, owner);
        }
    }

    // Suffixes and tooltips are always written empty and never read.
    bool Meet(const PlacedValue& text, const Owner& owner)
    {
        if (owner.key == "uiSuffix" || owner.key == "uiToolTip") {
            return false;
        }
        const auto role = owner.key == CAPSULE_LOCCAPNAME_STR      ? MetText::Role::Name
                          : owner.key == CAPSULE_CONTROL_VALUE_STR ? MetText::Role::Value
                                                                   : MetText::Role::Label;
        // Judged later, when all texts are known: whether a language is missing depends on the others.
        texts_.push_back({text, role});
        return true;
    }

    // The keys of a control's own kind. False where readers pass over the control, and its keys mean nothing.
    bool FindKind(const PlacedValue& control, const Shape*& kind)
    {
        const Shape& shape = *DefinitionShape().members.at(CAPSULE_CONTROLS_STR)->items;
        const PlacedValue type = control.Find(CAPSULE_CONTROL_TYPE_STR);
        const Shape& wanted = *shape.members.at(CAPSULE_CONTROL_TYPE_STR);
        std::int64_t number = 0;
        if (type && Fits(type, wanted) && type->Get(number)) {
            const auto found = shape.controlKinds.find(number);
            kind = found != shape.controlKinds.end() ? found->second : nullptr;
            return true;
        }
        if (type) {
            report_.At(type,
                       {Severity::Error, "UnknownKind",
                        report_.Found(type) + " is no kind of control: readers pass over the control", Wanted(wanted),
                        type->IsString() ? orvcore::NearestName(type.Text(), NamesOf(wanted)) : std::string()});
        }
        return !type;
    }

    void JudgeMember(const PlacedValue& object, const PlacedValue& member, const Shape& shape, const Shape* kind,
                     const Owner& owner)
    {
        const std::string_view key = member->Key();
        // By address: Find gives the member that readers take.
        if (&*object.Find(key) != &*member) {
            return; // a later one counts
        }
        if (shape.others != nullptr) {
            const bool isByLocale = shape.others->name == "sourceInfo" || shape.others->name == "strings";
            static_cast<void>(isByLocale && CheckLocaleKey(member, report_));
            return Judge(member, *shape.others, owner);
        }
        const Shape* own = FindMember(shape, key);
        const Shape* ofKind = kind != nullptr ? FindMember(*kind, key) : nullptr;
        if (own != nullptr) {
            Judge(member, *own, shape.isPart ? owner : Owner{key, IsPassedOver(shape, key), {}});
        } else if (ofKind != nullptr) {
            // These two are lenient in the reader's table of text controls; everything else of a kind's own is
            // required.
            const bool isOptional =
                key == CAPSULE_STRING_FONTEDITINFO_STR || key == CAPSULE_STRING_ALTERNATERECTINFO_STR;
            Judge(member, *ofKind, {key, isOptional, {}});
        } else {
            TellUnknown(member, shape, kind);
        }
    }

    static const Shape* FindMember(const Shape& shape, std::string_view key)
    {
        const auto found = shape.members.find(key);
        return found != shape.members.end() ? found->second : nullptr;
    }

    // The rows that the tables call lenient: all at the top level, and of a control all but its type and
    // canAnimate.
    static bool IsPassedOver(const Shape& shape, std::string_view key)
    {
        return &shape == &DefinitionShape() || (shape.name == "control" && key != CAPSULE_CONTROL_TYPE_STR &&
                                                key != CAPSULE_CONTROLPROPS_CANANIMATE_STR);
    }

    // Unknown keys are legal. Where readers keep them only one that looks like a known key is told, elsewhere each,
    // because its value is lost.
    void TellUnknown(const PlacedValue& member, const Shape& shape, const Shape* kind)
    {
        const std::string_view key = member->Key();
        // Which keys such a control may have is unknown.
        const bool isOfUnknownKind = shape.name == "control" && kind == nullptr;
        const bool isForEditors = &shape == &DefinitionShape() && key == "$schema";
        const bool isMediaValue = kind != nullptr && kind->name == "media" && key == CAPSULE_CONTROL_VALUE_STR;
        if (isOfUnknownKind || isForEditors || isMediaValue || !report_.HasRoom(Severity::Warning)) {
            return;
        }
        std::vector<std::string> known;
        for (const Shape* of : {&shape, kind}) {
            if (of != nullptr) {
                std::transform(of->members.begin(), of->members.end(), std::back_inserter(known),
                               [](const auto& named) { return std::string(named.first); });
            }
        }
        std::string nearest = orvcore::NearestName(key, known);
        const bool isKept = shape.keepsUnknown || (kind != nullptr && kind->keepsUnknown);
        if (nearest.empty() && isKept) {
            return;
        }
        report_.AtKey(member, {Severity::Warning,
                               "UnknownKey",
                               Quoted(key) + " is no key of this object" + (isKept ? "" : ": readers pass over it"),
                               {},
                               std::move(nearest)});
    }

    void TellRepeated(const PlacedValue& object)
    {
        std::unordered_set<std::string_view> keys;
        for (std::size_t i = 0; i < object.size(); ++i) {
            if (!keys.insert(object[i]->Key()).second) {
                report_.AtKey(object[i], {Severity::Warning, "RepeatedKey",
                                          "the key " + Quoted(object[i]->Key()) +
                                              " comes more than once: only the last one counts"});
            }
        }
    }

    void TellMissing(const PlacedValue& object, const Shape& shape, const Owner& owner)
    {
        for (const std::string_view key : shape.required) {
            const bool isMeant = (shape.name == "control" && key == CAPSULE_CONTROL_ID_STR) ||
                                 &shape == &DefinitionShape(); // told otherwise, or no error
            if (object.Find(key) || isMeant) {
                continue;
            }
            if (shape.isPart) {
                return TellUnusable(object, shape, owner);
            }
            const Shape& wanted = *shape.members.at(key);
            report_.Absent(object, key,
                           {Severity::Error, "MissingKey", "the required key \"" + std::string(key) + "\" is missing",
                            Wanted(wanted)});
        }
    }

    DefinitionReport& report_;
    std::vector<MetText> texts_;
};

} // namespace

std::vector<MetText> CheckShape(const PlacedValue& root, DefinitionReport& report)
{
    ShapeWalk walk(report);
    walk.Judge(root, DefinitionShape(), {"", true, "the definition"});
    return walk.TakeTexts();
}

} // namespace orvcapsule::detail
