#include <validation/detail/DefinitionChecks.h>

#include <capsule/ClientControl.h>
#include <capsule/DefinitionKeys.h>
#include <orvcore/json/JSONSplice.h>
#include <orvcore/text/NearestName.h>

#include <unordered_map>
#include <unordered_set>

namespace orvcapsule::detail {

// Rules between the values of one control, and between controls. A value that the schema refuses is left out here: each
// rule asks for its values by type and does nothing without them, so that one mistake gives one finding.
//
// An error is what a host shows otherwise than it was written (a slider's value outside its range), a warning what it
// shows as written though it can hardly be meant.

namespace {

using orvcore::serialization::ToJSON;

std::string Range(double least, double most)
{
    return ToJSON(least) + " to " + ToJSON(most);
}

void CheckSlider(const PlacedValue& control, DefinitionReport& report)
{
    double least = 0;
    double most = 0;
    double value = 0;
    if (!control.Get(CAPSULE_SLIDERVALUE_MIN_STR, least) || !control.Get(CAPSULE_SLIDERVALUE_MAX_STR, most)) {
        return;
    }
    if (least > most) {
        report.At(control.Find(CAPSULE_SLIDERVALUE_MIN_STR),
                  {Severity::Warning, "MinAboveMax", "its least value is above its greatest, " + ToJSON(most),
                   "a number up to " + ToJSON(most)});
    } else if (control.Get(CAPSULE_CONTROL_VALUE_STR, value) && (value < least || value > most)) {
        report.At(control.Find(CAPSULE_CONTROL_VALUE_STR),
                  {Severity::Error, "OutOfRange",
                   "its value " + ToJSON(value) + " is outside its range " + Range(least, most),
                   "a number from " + Range(least, most)});
    }
}

void CheckColor(const PlacedValue& control, DefinitionReport& report)
{
    const PlacedValue parts = control.Find(CAPSULE_CONTROL_VALUE_STR);
    for (std::size_t i = 0; parts && parts->IsArray() && parts.size() == 4 && i < 4; ++i) {
        double part = 0;
        if (parts[i]->Get(part) && (part < 0 || part > 1)) {
            report.At(parts[i], {Severity::Warning, "ColorOutOfRange",
                                 "a part of its colour is outside 0 to 1, the range of what screens show",
                                 "a number from 0 to 1"});
        }
    }
}

void CheckMenu(const PlacedValue& control, DefinitionReport& report)
{
    const PlacedValue entries = control.Find(CAPSULE_MENU_CONTENT_STR);
    std::int32_t index = 0;
    std::int64_t wide = 0;
    if (!entries || !entries->IsArray() || !control.Get(CAPSULE_CONTROL_VALUE_STR, wide)) {
        return;
    }
    // A number beyond 32 bits is unusable to readers, and told by CheckShape.
    index = static_cast<std::int32_t>(wide);
    const auto count = static_cast<std::int64_t>(entries.size());
    if (index == wide && (wide < 0 || wide >= count)) {
        report.At(control.Find(CAPSULE_CONTROL_VALUE_STR),
                  {Severity::Error, "OutOfRange",
                   "its value " + std::to_string(wide) + " is outside its " + std::to_string(count) + " entries",
                   count == 0 ? "an entry to select" : "an index from 0 to " + std::to_string(count - 1)});
    }
}

void CheckScale(const PlacedValue& control, DefinitionReport& report)
{
    std::int64_t dimensions = 0;
    const PlacedValue parts = control.Find(CAPSULE_CONTROL_VALUE_STR);
    if (!control.Get(CAPSULE_SCALE_DIMENSIONS_STR, dimensions) || !parts || !parts->IsArray()) {
        return;
    }
    if (dimensions < 1) {
        report.At(control.Find(CAPSULE_SCALE_DIMENSIONS_STR),
                  {Severity::Warning, "NotPositive", "it has no dimensions", "a number above 0"});
    } else if (static_cast<std::uint64_t>(dimensions) != parts.size()) {
        report.At(parts, {Severity::Warning, "UnequalCounts",
                          "it has " + std::to_string(parts.size()) + " values for " + std::to_string(dimensions) +
                              " dimensions",
                          "one value a dimension"});
    }
}

// Ids, and what is said by them.
// Views into the definition's text serve as keys, because a hostile definition may have hundreds of thousands of ids.
// Each of them is looked at a fixed number of times: no pass over all controls for each control.
class ControlIds {
public:
    ControlIds(const PlacedValue& controls, DefinitionReport& report)
        : controls_(controls)
        , report_(report)
    {
        for (std::size_t i = 0; i < controls.size(); ++i) {
            const PlacedValue id = controls[i].Find(CAPSULE_CONTROL_ID_STR);
            if (id && id->IsString() && !id.Text().empty()) {
                Take(id, i);
            } else if (controls[i]->IsObject() && (!id || id->IsString())) {
                Note note{Severity::Warning, "EmptyName", "it has no id: neither groups nor hosts can name it",
                          "an id that no other control has"};
                id ? report.At(id, std::move(note))
                   : report.Absent(controls[i], CAPSULE_CONTROL_ID_STR, std::move(note));
            }
        }
    }

    void CheckGroup(std::size_t group) const
    {
        const PlacedValue members = controls_[group].Find(CAPSULE_CONTROL_VALUE_STR);
        std::unordered_set<std::string_view> known;
        for (std::size_t i = 0; members && members->IsArray() && i < members.size(); ++i) {
            const std::string_view id = members[i].Text();
            if (!members[i]->IsString()) {
                continue;
            }
            if (!numbers_.contains(id)) {
                TellUnknown(members[i]);
            } else if (!known.insert(id).second) {
                report_.At(members[i], {Severity::Warning, "RepeatedEntry", "it has " + Quoted(id) + " twice"});
            }
        }
    }

    // A group that is a member of itself, by way of others perhaps. Goes through every group once.
    // A member that is `Open` lies on the way from the first group to this one, so it closes a circle; one that is
    // `Done` was searched and is in none that leads here. A host that draws groups as a tree would not come to an end.
    void CheckCircles() const
    {
        std::vector<State> states(controls_.size(), State::Unseen);
        for (std::size_t i = 0; i < controls_.size(); ++i) {
            Descend(i, states);
        }
    }

private:
    enum class State : char { Unseen, Open, Done };

    void Take(const PlacedValue& id, std::size_t number)
    {
        const auto [known, isNew] = numbers_.emplace(id.Text(), number);
        if (isNew) {
            names_.emplace_back(id.Text());
        } else if (repeated_.insert(id.Text()).second) {
            report_.At(id, {Severity::Error, "RepeatedId",
                            "control " + std::to_string(known->second + 1) + " has the same id",
                            "an id that no other control has"});
        }
    }

    void TellUnknown(const PlacedValue& member) const
    {
        // Finding the nearest name compares with every id. The limit on ids and the one on kept findings bound the
        // product.
        constexpr std::size_t kMostCompared = 1000;
        const bool isCompared = names_.size() <= kMostCompared && report_.HasRoom(Severity::Error);
        report_.At(member,
                   {Severity::Error, "UnknownMember", "its member " + Quoted(member.Text()) + " names no control",
                    "the id of a control", isCompared ? orvcore::NearestName(member.Text(), names_) : std::string()});
    }

    PlacedValue MembersOf(std::size_t number) const
    {
        std::int64_t type = 0;
        const PlacedValue control = controls_[number];
        const bool isGroup =
            control.Get(CAPSULE_CONTROL_TYPE_STR, type) && type == static_cast<std::int64_t>(ClientControlType::kGroup);
        const PlacedValue members = isGroup ? control.Find(CAPSULE_CONTROL_VALUE_STR) : PlacedValue();
        return members && members->IsArray() ? members : PlacedValue();
    }

    // Not recursive: groups may lie in one another as deep as there are controls.
    void Descend(std::size_t first, std::vector<State>& states) const
    {
        std::vector<std::pair<std::size_t, std::size_t>> way; // a group, and its next member
        const auto enter = [&](std::size_t number) {
            states[number] = State::Open;
            way.emplace_back(number, 0);
        };
        if (states[first] == State::Unseen) {
            enter(first);
        }
        while (!way.empty()) {
            const std::size_t group = way.back().first;
            const PlacedValue members = MembersOf(group);
            if (!members || way.back().second == members.size()) {
                states[group] = State::Done;
                way.pop_back();
                continue;
            }
            const PlacedValue member = members[way.back().second++];
            const auto found = numbers_.find(member.Text());
            if (found != numbers_.end() && states[found->second] == State::Open) {
                report_.At(member, {Severity::Warning, "GroupInItself",
                                    "its member " + Quoted(member.Text()) +
                                        (found->second == group ? " is the group itself" : " holds the group")});
            } else if (found != numbers_.end() && states[found->second] == State::Unseen) {
                enter(found->second);
            }
        }
    }

    const PlacedValue controls_;
    DefinitionReport& report_;
    std::unordered_map<std::string_view, std::size_t> numbers_;
    std::vector<std::string> names_;
    std::unordered_set<std::string_view> repeated_;
};

void CheckKind(const ControlIds& ids, const PlacedValue& controls, std::size_t number, DefinitionReport& report)
{
    const PlacedValue control = controls[number];
    std::int64_t type = 0;
    control.Get(CAPSULE_CONTROL_TYPE_STR, type);
    switch (static_cast<ClientControlType>(type)) {
    case ClientControlType::kSlider:
        return CheckSlider(control, report);
    case ClientControlType::kColor:
        return CheckColor(control, report);
    case ClientControlType::kScale:
        return CheckScale(control, report);
    case ClientControlType::kMenu:
        return CheckMenu(control, report);
    case ClientControlType::kSpreadsheet:
        return CheckSheet(control, report);
    case ClientControlType::kGroup:
        return ids.CheckGroup(number);
    case ClientControlType::kCheckbox:
    case ClientControlType::kAngle:
    case ClientControlType::kPoint2D:
    case ClientControlType::kText:
    case ClientControlType::kComment:
    case ClientControlType::kGroupDropZone:
    case ClientControlType::kMedia:
        break;
    }
}

} // namespace

void CheckControls(const PlacedValue& root, DefinitionReport& report)
{
    const PlacedValue controls = root.Find(CAPSULE_CONTROLS_STR);
    if (!controls || !controls->IsArray()) {
        return;
    }
    const ControlIds ids(controls, report);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        CheckKind(ids, controls, i, report);
        if (controls[i]->IsObject() && !controls[i].Find(CAPSULE_CONTROL_UINAME_STR)) {
            report.Absent(controls[i], CAPSULE_CONTROL_UINAME_STR,
                          {Severity::Warning, "EmptyName", "it has no label", "a localised text"});
        }
    }
    ids.CheckCircles();
}

} // namespace orvcapsule::detail
