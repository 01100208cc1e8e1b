#include <tools/zelt/support/ControlChecks.h>

#include <orvcore/json/JSONSplice.h>

#include <map>

namespace zelt {

namespace {

using namespace orvcapsule;
using orvcore::serialization::ToJSON;
using IdCounts = std::map<std::string, int>;

IdCounts CheckIds(const std::vector<DocumentControl>& controls, Problems& problems)
{
    IdCounts uses;
    for (const DocumentControl& control : controls) {
        if (++uses[control.id] == 2) {
            problems.Add({"RepeatedId", control.label + ": another control has the same id"});
        }
    }
    return uses;
}

void CheckGroup(const DocumentControl& control, const IdCounts& uses, Problems& problems)
{
    const ControlValue value = control.record->GetVal();
    const auto* members = std::get_if<std::vector<UTF16String>>(&value);
    if (members == nullptr) {
        return;
    }
    for (const UTF16String& member : *members) {
        const std::string id = orvcore::ToNarrow(member);
        if (!uses.contains(id)) {
            problems.Add({"UnknownMember", control.label + ": its member \"" + Shortened(id) + "\" names no control"});
        }
    }
}

void CheckSlider(const DocumentControl& control, Problems& problems)
{
    const auto* slider = dynamic_cast<const SliderControl*>(control.record.get());
    if (slider == nullptr) {
        return;
    }
    const double value = std::get<double>(slider->GetVal());
    if (value < slider->GetMinimum() || value > slider->GetMaximum()) {
        problems.Add({"OutOfRange", control.label + ": its value " + ToJSON(value) + " is outside its range " +
                                        ToJSON(slider->GetMinimum()) + " to " + ToJSON(slider->GetMaximum())});
    }
}

void CheckMenu(const DocumentControl& control, Problems& problems)
{
    const auto* menu = dynamic_cast<const MenuControl*>(control.record.get());
    if (menu == nullptr) {
        return;
    }
    const std::int64_t index = std::get<std::int32_t>(menu->GetVal());
    const auto entries = static_cast<std::int64_t>(menu->GetEntries().size());
    if (index < 0 || index >= entries) {
        problems.Add({"OutOfRange", control.label + ": its value " + std::to_string(index) + " is outside its " +
                                        std::to_string(entries) + " entries"});
    }
}

} // namespace

void CheckControls(const std::vector<DocumentControl>& controls, Problems& problems)
{
    const IdCounts uses = CheckIds(controls, problems);
    for (const DocumentControl& control : controls) {
        if (control.record != nullptr) {
            CheckGroup(control, uses, problems);
            CheckSlider(control, problems);
            CheckMenu(control, problems);
        }
    }
}

} // namespace zelt
