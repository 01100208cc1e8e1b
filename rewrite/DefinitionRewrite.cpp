#include <rewrite/DefinitionRewrite.h>

#include <capsule/DefinitionKeys.h>
#include <capsule/Serialization.h>
#include <package/CapsuleZip.h>
#include <sources/ILumoLibrariesWrapper.h>
#include <sources/SourceNames.h>

#include <orvcore/json/JSONSplice.h>
#include <orvcore/json/shared/JSONDocument.h>
#include <orvcore/json/shared/JSONTable.h>

#include <any>
#include <optional>
#include <string_view>

// The text is edited and not written from a record: it may be a newer library's or another program's, and whatever
// a record does not hold would be lost (docs/decisions/rewriting-definitions.md).

namespace orvcapsule {

namespace {

namespace libraries = ILumoLibrariesWrapper;
namespace json = orvcore::serialization;
using orvcore::UTF8String;

UTF8String ReadSchema(const std::string& libraryID, const std::string& elementID)
{
    return GetJsonContent(orvcore::ToUTF8(libraries::GetCapsuleSchemaPath(libraryID, elementID)));
}

// Read again from its place, since the package may have changed after the entry was made. An entry of another source, a
// stock one for instance, has no package here, so the caller brings the text.
UTF8String DefinitionOf(const CapsuleEntry& entry, const UTF8String& fallbackJson)
{
    const std::string source = entry.GetSourceID();
    if (source == kLocalSourceID) {
        return CapsuleZip(entry.path).GetZELTDescriptionJSON();
    }
    if (source == kLumoLibrariesSourceID) {
        return ReadSchema(entry.GetLibraryID(), entry.GetLumoElementID());
    }
    return fallbackJson;
}

// What scanning for values leaves open is the parser's to judge: ill-formed UTF-8, and numbers that are too large.
void NeedObject(const UTF8String& text)
{
    if (!json::JSONDocument::Parse(text).Root().IsObject()) {
        throw std::bad_any_cast();
    }
}

// The value of a key, as JSON text; empty when the key is not one that is replaced.
std::optional<std::string> ValueOf(const Capsule& capsule, std::string_view key)
{
    if (key == CAPSULE_LOCCAPNAME_STR) {
        const auto name = serialization::UIStringToAny(capsule.GetCapsuleNameLocalized());
        return orvcore::ToNarrow(json::GetJSONUTF8String(name, false));
    }
    if (key == CAPSULE_TAGS_STR) {
        return orvcore::ToNarrow(json::detail::ToText(capsule.GetTags()));
    }
    if (key == CAPSULE_LICENSEID_STR) { // hosts count on the template's identifier here, not on its licence's
        return json::ToJSON(std::string_view(orvcore::ToNarrow(capsule.GetCapsuleID())));
    }
    return std::nullopt;
}

} // namespace

orvcore::ResultCode GetCapsuleJson(const UTF8String& libraryName, const UTF8String& elementName, UTF8String& outPath,
                                   UTF8String& outJson)
{
    std::vector<std::string> libraryIDs;
    std::vector<std::string> elementIDs;
    // The library manager may answer differently from call to call while libraries are synchronised; an element that
    // vanishes in between gives empty texts, which is an answer, too.
    libraries::GetLibraryList(libraryIDs);
    for (const std::string& library : libraryIDs) {
        if (libraries::GetLibraryNameFromLibraryID(library) != orvcore::AsNarrow(libraryName)) {
            continue;
        }
        libraries::GetCapsuleElementIDs(library, elementIDs);
        for (const std::string& element : elementIDs) {
            if (libraries::GetElementName(library, element) == orvcore::AsNarrow(elementName)) {
                outPath = orvcore::ToUTF8(libraries::GetCapsulePath(library, element));
                outJson = ReadSchema(library, element);
                return orvcore::kResultOK;
            }
        }
    }
    return kResultNothingFound;
}

UTF8String UpdateCapsuleValuesInPlace(const boost::shared_ptr<CapsuleEntry>& entry,
                                      const std::shared_ptr<Capsule>& capsule, const std::vector<const char*>& keys,
                                      const UTF8String& fallbackJson)
{
    const UTF8String text = entry ? DefinitionOf(*entry, fallbackJson) : fallbackJson;
    if (text.empty()) {
        return {};
    }
    NeedObject(text);
    json::JSONSplice splice(orvcore::ToNarrow(text));
    const json::JSONOutline& root = splice.Root();
    for (const char* key : keys) {
        const auto value = capsule && key != nullptr ? ValueOf(*capsule, key) : std::nullopt;
        if (value) {
            splice.SetMember(root, key, *value);
        }
    }
    return orvcore::ToUTF8(splice.Text());
}

} // namespace orvcapsule
