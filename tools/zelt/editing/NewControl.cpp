#include <tools/zelt/editing/NewControl.h>

#include <tools/zelt/editing/ControlInput.h>
#include <tools/zelt/output/Errors.h>

#include <capsule/ControlFactory.h>
#include <orvcore/text/NearestName.h>

#include <array>

namespace zelt {

namespace {

using namespace orvcapsule;
using orvcore::ToUTF16;

// What the parts of the form say of a control.
struct Form {
    UTF16String id;
    UIString label;
    std::string locale;
    std::string value;
    bool hasValue = false;
};

UIString Localized(const std::string& text, const std::string& locale)
{
    return UIString(std::vector<LocStrPair>{{ToUTF16(locale), ToUTF16(text)}});
}

std::vector<std::string> Split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::string_view part = text.substr(0, text.find(separator));
        parts.emplace_back(part);
        text.remove_prefix(std::min(part.size() + 1, text.size()));
    }
    return parts;
}

constexpr ControlProperties kAnimates{true};
constexpr ControlProperties kStill{false};

// Value that `set` would take is set later: it says best what is wrong with one.
NewControl WithValue(factory::ControlPtr control, const Form& form)
{
    return {std::move(control), form.hasValue ? std::optional(form.value) : std::nullopt};
}

NewControl MakeSlider(const Form& form)
{
    const std::vector<double> numbers = form.hasValue ? ParseNumbers(form.value) : std::vector<double>{0, 0, 100};
    if (numbers.size() != 3 || numbers[0] < numbers[1] || numbers[0] > numbers[2]) {
        throw UsageError('"' + form.value + "\" is not VALUE,MIN,MAX, with the value between the two");
    }
    return {factory::CreateSliderControl(form.id, form.label, kAnimates, numbers[1], numbers[2], numbers[0]), {}};
}

NewControl MakeMenu(const Form& form)
{
    std::vector<UIString> entries;
    for (const std::string& entry : Split(form.value, '|')) {
        entries.push_back(Localized(entry, form.locale));
    }
    if (entries.empty()) {
        throw UsageError("it needs entries: =ONE|TWO");
    }
    return {factory::CreateMenuControl(form.id, form.label, kStill, 0, entries), {}};
}

NewControl MakeGroup(const Form& form)
{
    std::vector<UTF16String> members;
    for (const std::string& member : Split(form.value, ',')) {
        members.push_back(ToUTF16(member));
    }
    return {factory::CreateGroupControl(form.id, form.label, kStill, members, true), {}};
}

NewControl MakeText(const Form& form)
{
    return {factory::CreateStringControl(form.id, form.label, kStill, Localized(form.value, form.locale), {}, {},
                                         kinlet::ESourceTextOverrideType::kNone),
            {}};
}

struct ControlKind {
    std::string_view name;
    NewControl (*make)(const Form& form);
};

constexpr std::array<ControlKind, 11> kKinds = {{
    {"checkbox",
     [](const Form& form) {
         return WithValue(factory::CreateCheckboxControl(form.id, form.label, kAnimates, false), form);
     }},
    {"slider", &MakeSlider},
    {"angle",
     [](const Form& form) { return WithValue(factory::CreateAngleControl(form.id, form.label, kAnimates, 0), form); }},
    {"color",
     [](const Form& form) {
         return WithValue(factory::CreateColorControl(form.id, form.label, kAnimates, ColorRGBA{0, 0, 0, 1}), form);
     }},
    {"point",
     [](const Form& form) {
         return WithValue(factory::CreatePoint2DControl(form.id, form.label, kAnimates, {}), form);
     }},
    {"text", &MakeText},
    {"comment",
     [](const Form& form) {
         return NewControl{
             factory::CreateCommentControl(form.id, form.label, kStill, Localized(form.value, form.locale)), {}};
     }},
    {"scale",
     [](const Form& form) {
         return WithValue(factory::CreateScaleControl(form.id, form.label, kAnimates, true, 2, {100, 100}), form);
     }},
    {"menu", &MakeMenu},
    {"group", &MakeGroup},
    {"media",
     [](const Form& form) {
         return WithValue(factory::CreateMediaControl(form.id, form.label, kStill, true, {}, u""), form);
     }},
}};

const ControlKind& FindKind(const std::string& name)
{
    std::vector<std::string> names;
    for (const ControlKind& kind : kKinds) {
        if (kind.name == name) {
            return kind;
        }
        names.emplace_back(kind.name);
    }
    const std::string nearest = orvcore::NearestName(name, names);
    throw UsageError("there is no kind \"" + name + '"' +
                     (nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?"));
}

} // namespace

NewControl ParseNewControl(std::string_view text, const std::string& locale)
{
    // The value may hold any character, colons included, so it is cut off first.
    const std::size_t equals = std::min(text.find('='), text.size());
    const std::string_view head = text.substr(0, equals);
    const std::size_t colon = std::min(head.find(':'), head.size());
    const std::size_t second = std::min(head.find(':', colon + 1), head.size());
    const std::string id(head.substr(std::min(colon + 1, head.size()), second - std::min(colon + 1, second)));
    try {
        const ControlKind& kind = FindKind(std::string(head.substr(0, colon)));
        if (id.empty()) {
            throw UsageError("an id is needed, KIND:ID");
        }
        Form form;
        form.id = ToUTF16(id);
        form.label = Localized(second < head.size() ? std::string(head.substr(second + 1)) : id, locale);
        form.locale = locale;
        form.hasValue = equals < text.size();
        form.value = form.hasValue ? std::string(text.substr(equals + 1)) : "";
        return kind.make(form);
    } catch (const UsageError& error) {
        throw UsageError("--control \"" + std::string(text) + "\": " + error.what());
    }
}

} // namespace zelt
