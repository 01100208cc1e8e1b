#include <kinlet/detail/ReplaceRecord.h>
#include <kinlet/detail/SourceInfoJSON.h>

namespace kinlet::detail {

bool ReadRecord(const JSONNode& node, SourceInfo& out)
{
    return ReplaceRecord(node, out);
}

void WriteRecord(JSONSink& sink, const SourceInfo& value)
{
    PutRecord(sink, value);
}

} // namespace kinlet::detail
