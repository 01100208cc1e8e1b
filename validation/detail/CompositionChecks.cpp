#include <validation/detail/DefinitionChecks.h>

#include <capsule/DefinitionKeys.h>
#include <orvcore/text/Guid.h>

namespace orvcapsule::detail {

namespace {

// Members that count something of which there must be some.
// A 0 is a duration or a size of nothing, or the divisor of one.
void NeedPositive(const PlacedValue& record, std::initializer_list<std::string_view> keys, DefinitionReport& report)
{
    for (const std::string_view key : keys) {
        std::int64_t number = 0;
        if (record && record.Get(key, number) && number <= 0) {
            report.At(record.Find(key),
                      {Severity::Warning, "NotPositive",
                       Quoted(record->Key()) + " has a " + Quoted(key) + " of " + std::to_string(number),
                       "a number above 0"});
        }
    }
}

// What lies on a collaboration server means nothing to those who get the template.
void CheckSecrets(const PlacedValue& composition, DefinitionReport& report)
{
    for (const char* request : {"veldenassetrequestinfo", "veldenproductionrequestinfo"}) {
        const PlacedValue info = composition.Find(request);
        const PlacedValue server = info ? info.Find("mServerConnectInfo") : PlacedValue();
        const PlacedValue token = server ? server.Find("mAuthToken") : PlacedValue();
        if (token && !token.Text().empty()) {
            report.AtKey(token,
                         {Severity::Warning, "SecretInside", "the template holds a token for a server", "no token"});
        }
    }
}

// FromString of a text that is no GUID is empty and not the nil one: that mistake is CheckShape's to tell.
void CheckIdentities(const PlacedValue& composition, DefinitionReport& report)
{
    const PlacedValue id = composition.Find("id");
    if (id && orvcore::Guid::FromString(id.Text()) == orvcore::Guid()) {
        report.At(id,
                  {Severity::Warning, "NoIdentity", "the composition's identity is everybody's", "a GUID of its own"});
    }
}

void CheckComposition(const PlacedValue& composition, DefinitionReport& report)
{
    if (!composition->IsObject()) {
        return;
    }
    NeedPositive(composition.Find("duration"), {"value", "scale"}, report);
    NeedPositive(composition.Find("pixelaspectratio"), {"numerator", "denominator"}, report);
    NeedPositive(composition.Find("framerate"), {"ticksperframe"}, report);
    if (const PlacedValue frame = composition.Find("framesize")) {
        NeedPositive(frame.Find("size"), {"x", "y"}, report);
    }
    CheckIdentities(composition, report);
    CheckSecrets(composition, report);
    if (const PlacedValue name = composition.Find("name"); name && name->IsString() && name.Text().empty()) {
        report.At(name, {Severity::Warning, "EmptyName", "the composition has no name", "a name"});
    }
}

} // namespace

void CheckCompositions(const PlacedValue& root, DefinitionReport& report)
{
    const PlacedValue older = root.Find(CAPSULE_SOURCE_INFO_STR);
    const PlacedValue localized = root.Find(CAPSULE_SOURCE_INFO_LOC_STR);
    if (older) {
        CheckComposition(older, report);
    }
    const bool isMap = localized && localized->IsObject();
    for (std::size_t i = 0; isMap && i < localized.size(); ++i) {
        CheckComposition(localized[i], report);
    }
    // A value that is no object was told of already, and passed over by readers; a second finding would say the same.
    if (!older && (!localized || (isMap && localized.size() == 0))) {
        Note note{Severity::Warning, "NoComposition",
                  "the template has no composition: hosts know no size and no duration",
                  "a composition for at least one locale"};
        localized ? report.At(localized, std::move(note))
                  : report.Absent(root, CAPSULE_SOURCE_INFO_LOC_STR, std::move(note));
    }
}

} // namespace orvcapsule::detail
