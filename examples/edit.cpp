// The smallest host that changes a template: gives it a name in one language and sets a number that the user may edit.
// docs/hosting.md goes through it.

#include <capsule/Serialization.h>
#include <package/CapsuleZip.h>
#include <tools/support/Arguments.h>
#include <tools/support/Console.h>
#include <validation/TemplateReading.h>

#include <charconv>
#include <iostream>
#include <stdexcept>

namespace {

using orvcapsule::Capsule;
using orvcapsule::CapsuleZip;

std::shared_ptr<Capsule> Read(const CapsuleZip& package)
{
    const orvcapsule::TemplateReading reading = orvcapsule::ReadTemplate(package);
    if (!reading) {
        throw std::runtime_error(reading.refusals.front().text);
    }
    return reading.capsule;
}

void SetNumber(const Capsule& capsule, const orvcore::UTF16String& id, const std::string& text)
{
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw std::runtime_error(text + " is no number");
    }
    const auto control = capsule.FindControl(id);
    if (!control) {
        throw std::runtime_error("there is no control " + orvcore::ToNarrow(id));
    }
    control->SetValOfKind(number); // throws for a control that is no slider or angle
}

void Store(CapsuleZip& package, const std::shared_ptr<Capsule>& capsule)
{
    if (!package.SetZELTDescriptionJSON(orvcapsule::serialization::CapsuleToJson(capsule))) {
        throw std::runtime_error(package.GetLastFailure().Message());
    }
}

} // namespace

int main(int argc, char** argv)
{
    orvtools::SetConsoleUTF8(); // this line and the next are a program's; a host has its own
    const std::vector<std::string> arguments = orvtools::UTF8Arguments(argc, argv);
    if (arguments.size() != 6) {
        std::cerr << "usage: edit PACKAGE LANGUAGE NAME CONTROL NUMBER\n";
        return 2;
    }
    try {
        CapsuleZip package(orvcore::ToUTF8(arguments[1]));
        const std::shared_ptr<Capsule> capsule = Read(package);
        orvcapsule::UIString name = capsule->GetCapsuleNameLocalized();
        name.SetString(orvcore::ToUTF16(std::string_view(arguments[3])),
                       orvcore::ToUTF16(std::string_view(arguments[2])));
        capsule->SetCapsuleNameLocalized(name);
        SetNumber(*capsule, orvcore::ToUTF16(std::string_view(arguments[4])), arguments[5]);
        Store(package, capsule);
    } catch (const std::exception& error) {
        std::cerr << arguments[1] << ": " << error.what() << '\n';
        return 1;
    }
    std::cout << "stored\n";
    return 0;
}
