#include <kinlet/CapsuleParams.h>

#include <kinlet/RecordJSON.h>
#include <kinlet/detail/CapsuleParamsJSON.h>
#include <kinlet/detail/ReplaceRecord.h>
#include <kinlet/shared/RecordCodecs.h>

namespace kinlet {

orvcore::serialization::Variant CapsuleParams::ToJSON() const
{
    return kinlet::ToJSON(*this);
}

bool CapsuleParams::FromJSON(const orvcore::serialization::Variant& tree)
{
    return kinlet::FromJSON(tree, *this);
}

namespace detail {

bool ReadRecord(const JSONNode& node, CapsuleParams& out)
{
    return ReplaceRecord(node, out);
}

void WriteRecord(JSONSink& sink, const CapsuleParams& value)
{
    PutRecord(sink, value);
}

} // namespace detail

} // namespace kinlet
