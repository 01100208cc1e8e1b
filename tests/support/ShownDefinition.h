#pragma once

#include <capsule/Serialization.h>

#include <orvcore/json/JSONErrors.h>

namespace orvtest {

/// What a definition comes to for a list of templates: its text written again without what such a list leaves out, or
/// why there is none. `read` gives a pointer to the template, or something like it.
template <class Read>
orvcapsule::UTF8String ShownDefinition(const Read& read)
{
    namespace json = orvcore::serialization;
    try {
        const auto capsule = read();
        if (!capsule) {
            return u8"of a newer version";
        }
        auto shown = std::make_shared<orvcapsule::Capsule>(*capsule);
        shown->SetControls({});
        shown->SetSourceInfoVector({{u"en_US", shown->GetSourceInfo()}});
        return orvcapsule::serialization::CapsuleToJson(shown);
    } catch (const json::missing_key_exception& error) {
        return orvcapsule::UTF8String(orvcore::AsUTF8(error.what()));
    } catch (const json::json_write_exception&) { // keys of an older form that lie deeper in the newer one
        return u8"not to be written";
    }
}

} // namespace orvtest
