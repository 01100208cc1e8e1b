#include <capsule/Serialization.h>

#include <capsule/detail/CapsuleTable.h>
#include <capsule/detail/ControlTables.h>
#include <capsule/detail/VersionGate.h>
#include <capsule/shared/ListedCapsule.h>

#include <algorithm>

namespace orvcapsule::serialization {

namespace {

namespace json = orvcore::serialization::detail;
using orvcore::serialization::JSONDocument;
using orvcore::serialization::Variant;

constexpr auto kListedRows = detail::CapsuleTable::ListedRows();

// The document of a text, or an empty one where the text is not JSON.
// That is the interface's promise: an empty record instead of an error. Validation tells the reason, for which it
// parses the text once more.
JSONDocument ParseOrNothing(const UTF8String& text)
{
    try {
        return JSONDocument::Parse(text, text.capacity() - text.size());
    } catch (const orvcore::serialization::json_parse_exception&) {
        return JSONDocument::FromTree(Variant());
    }
}

// About how long a definition becomes: most of it are the controls, and most of a control is its label. Never more than
// may be written.
std::size_t ExpectedSize(const Capsule& capsule)
{
    std::size_t size = 4096;
    for (const auto& control : capsule.GetControls()) {
        size += 256 + (control ? 96 * control->GetLocName()->GetLocaleStrings().size() : 0);
    }
    return std::min(size, orvcore::serialization::kMaxJSONSize);
}

template <class T>
UTF16String ToWideText(const T& value)
{
    return orvcore::ToUTF16(json::ToText(value));
}

template <class T>
T FromWideText(const UTF16String& text)
{
    T value{};
    json::Codec<T>::Read(ParseOrNothing(orvcore::ToUTF8(text)).Root(), value);
    return value;
}

} // namespace

UTF8String CapsuleToJson(const std::shared_ptr<Capsule>& capsule)
{
    if (!capsule) {
        return {};
    }
    UTF8String text = json::ToText(*capsule, ExpectedSize(*capsule));
    // The same limits as the readers' (docs/decisions/depth-limit.md): a definition stored beyond them could
    // never be read again. Size and number are known only when all is written; the depth is looked at while it is.
    if (const char* reason = JSONDocument::BeyondLimits(orvcore::AsNarrow(text))) {
        throw orvcore::serialization::json_write_exception(std::string("no reader would take the definition: ") +
                                                           reason);
    }
    return text;
}

std::shared_ptr<Capsule> CapsuleFromJson(const UTF8String& text)
{
    // Before the parser: a newer document may be JSON in a form that the tables below would take for damage, and a host
    // wants to tell the user to upgrade.
    if (!detail::PassesVersionGate(text)) {
        return nullptr;
    }
    auto capsule = std::make_shared<Capsule>();
    json::Codec<Capsule>::Read(ParseOrNothing(text).Root(), *capsule);
    return capsule;
}

std::optional<Capsule> ListedCapsuleFromJson(const UTF8String& text)
{
    if (!detail::PassesVersionGate(text)) {
        return std::nullopt;
    }
    std::optional<Capsule> capsule(std::in_place);
    const JSONDocument document = ParseOrNothing(text);
    if (document.Root().IsObject()) {
        json::TableWalker<Capsule, kListedRows>::Read(document.Root(), *capsule, nullptr);
    }
    return capsule;
}

Variant ClientControlToJson(const std::shared_ptr<ClientControl>& control)
{
    return json::ToTree(control);
}

std::shared_ptr<ClientControl> ClientControlFromJson(const Variant& value)
{
    std::shared_ptr<ClientControl> control;
    json::FromTree(value, control);
    return control;
}

Variant UIStringToAny(const UIString& text)
{
    return json::ToTree(text);
}

Variant SourceInfoToJson(const kinlet::SourceInfo& sourceInfo)
{
    return json::ToTree(sourceInfo);
}

kinlet::SourceInfo SourceInfoFromJson(const Variant& value)
{
    kinlet::SourceInfo sourceInfo;
    if (!json::FromTree(value, sourceInfo)) {
        throw orvcore::serialization::missing_key_exception(CAPSULE_SOURCE_INFO_STR);
    }
    return sourceInfo;
}

UTF16String AlternateRectInfoToJson(const AlternateRectInfo& info)
{
    return ToWideText(info);
}

AlternateRectInfo AlternateRectInfoFromJson(const UTF16String& text)
{
    return FromWideText<AlternateRectInfo>(text);
}

UTF16String TextEditInfoToJson(const kinlet::TextEditInfo& info)
{
    return ToWideText(info);
}

kinlet::TextEditInfo TextEditInfoFromJson(const UTF16String& text)
{
    return FromWideText<kinlet::TextEditInfo>(text);
}

UTF16String SourceTextFontEditInfoToJson(const kinlet::SourceTextFontEditInfo& info)
{
    return ToWideText(info);
}

kinlet::SourceTextFontEditInfo SourceTextFontEditInfoFromJson(const UTF16String& text)
{
    return FromWideText<kinlet::SourceTextFontEditInfo>(text);
}

UTF16String SpreadsheetColInfoLocVecToJson(const std::vector<SpreadsheetColumnInfoLoc>& columns)
{
    return ToWideText(columns);
}

std::vector<SpreadsheetColumnInfoLoc> SpreadsheetColInfoLocVecFromJson(const UTF16String& text)
{
    return FromWideText<std::vector<SpreadsheetColumnInfoLoc>>(text);
}

} // namespace orvcapsule::serialization
