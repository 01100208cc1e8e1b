#include <validation/detail/DefinitionText.h>

#include <orvcore/text/Strings.h>

namespace orvcapsule::detail {

namespace {

using orvcore::serialization::JSONDocument;

JSONDocument Parse(std::string_view text)
{
    try {
        return JSONDocument::Parse(orvcore::AsUTF8(text));
    } catch (const orvcore::serialization::json_parse_exception&) {
        orvcore::serialization::ReadOutline(text); // says where, unless what is wrong lies inside a value
        throw;
    }
}

} // namespace

DefinitionText::DefinitionText(std::string_view text)
    : document_(Parse(text))
    , outline_(orvcore::serialization::ReadOutline(text))
{
}

} // namespace orvcapsule::detail
