#include <capsule/ControlFactory.h>
#include <capsule/Guid.h>
#include <capsule/Serialization.h>
#include <orvcapsule/Version.h>

#include <orvcore/host/Application.h>

#include <iostream>
#include <string_view>

// Makes a template, writes it, reads it back and prints its name: exceptions, records and text cross the libraries.
int main()
{
    using namespace orvcapsule;
    orvcore::Application::SetLanguage("de_DE");
    auto capsule = std::make_shared<Capsule>(u"tsfx", u"Größe", utils::GenerateStringGuid());
    capsule->SetControls({factory::CreateSliderControl(u"s", UIString(u"Wert"), {true}, 0, 1, 0.5)});
    const auto read = serialization::CapsuleFromJson(serialization::CapsuleToJson(capsule));
    try {
        serialization::CapsuleFromJson(u8R"({"apiVersion":"2.2","clientControls":[{}]})");
        return 1;
    } catch (const orvcore::serialization::missing_key_exception& error) {
        std::cout << orvcore::ToNarrow(read->GetDisplayName()) << ' ' << error.GetKey() << '\n';
    }
    return read->FindControl(u"s") != nullptr && GetLibraryVersion() == std::string_view(ORVCAPSULE_VERSION) ? 0 : 1;
}
