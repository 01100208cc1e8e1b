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
        // The parser that reads values knows no place. The outline's scanner does, and throws its own error with the
        // offset; what it accepts (a number too large, ill-formed UTF-8) leaves the parser's error.
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
