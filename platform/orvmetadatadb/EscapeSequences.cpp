#include <orvmetadatadb/EscapeSequences.h>

namespace orvmetadatadb {

orvcore::UTF16String FixEscapeSequences(orvcore::UTF16String path)
{
    return path;
}

} // namespace orvmetadatadb
