#include <kinlet/detail/ReplaceRecord.h>
#include <kinlet/detail/TextEditInfoJSON.h>
#include <kinlet/shared/RecordCodecs.h>

namespace kinlet::detail {

bool ReadRecord(const JSONNode& node, SourceTextFontEditInfo& out)
{
    return ReplaceRecord(node, out);
}

void WriteRecord(JSONSink& sink, const SourceTextFontEditInfo& value)
{
    PutRecord(sink, value);
}

bool ReadRecord(const JSONNode& node, TextEditInfo& out)
{
    return ReplaceRecord(node, out);
}

void WriteRecord(JSONSink& sink, const TextEditInfo& value)
{
    PutRecord(sink, value);
}

} // namespace kinlet::detail
