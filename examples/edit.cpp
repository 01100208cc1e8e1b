// The smallest host that changes a template: gives it a name in one language and sets a number that the user may edit.
// docs/hosting.md goes through it.

#include <capsule/Serialization.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/TemporaryFolder.h>
#include <package/CapsuleZip.h>
#include <package/PackageNames.h>
#include <tools/support/Arguments.h>
#include <tools/support/Console.h>

#include <charconv>
#include <iostream>
#include <stdexcept>

namespace {

using orvcapsule::Capsule;
using orvcapsule::CapsuleZip;

std::shared_ptr<Capsule> Read(const CapsuleZip& package)
{
    const orvcore::UTF8String text = package.GetZELTDescriptionJSON();
    if (text.empty()) {
        throw std::runtime_error("no definition: " + package.GetLastFailure().Message()); // which may be an empty file
    }
    auto capsule = orvcapsule::serialization::CapsuleFromJson(text); // throws when a required key is missing
    if (!capsule) {
        throw std::runtime_error("the definition names no version, or one that this library does not know");
    }
    if (capsule->GetAPIVersion().empty()) { // an empty record: storing it would overwrite what can still be repaired
        throw std::runtime_error("the definition is damaged");
    }
    return capsule;
}

void SetNumber(const Capsule& capsule, const orvcore::UTF16String& id, const std::string& text)
{
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw std::runtime_error(text + " is no number");
    }
    for (const auto& control : capsule.GetControls()) {
        // The kind tells the value's type: a document with another cannot be written.
        if (control->GetID() == id && std::holds_alternative<double>(control->GetVal())) {
            control->SetVal(number);
            return;
        }
    }
    throw std::runtime_error("there is no slider or angle " + orvcore::ToNarrow(id));
}

void Store(CapsuleZip& package, const std::shared_ptr<Capsule>& capsule)
{
    const orvcore::UTF8String text = orvcapsule::serialization::CapsuleToJson(capsule);
    const orvcore::TemporaryFolder folder(u8"orvcapsule-edit");
    const auto file = folder.Path() / orvcapsule::kJSONFileName;
    orvcore::WriteBufferToFile(file, text.data(), text.size());
    if (!package.SetZELTDescriptionJSON(orvcore::PathToUTF16(folder.Path()))) { // takes the folder, not the file
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
