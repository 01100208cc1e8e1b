#pragma once

#include <orvcore/json/shared/JSONTable.h>

namespace kinlet::detail {

// The bodies of the calls in RecordCodecs.h. Reading starts from a fresh record, so that nothing of the old one is
// left.
template <class T>
bool ReplaceRecord(const orvcore::serialization::JSONNode& node, T& out)
{
    out = T();
    return orvcore::serialization::detail::TableCodec<T>::Read(node, out);
}

template <class T>
void PutRecord(orvcore::serialization::JSONSink& sink, const T& value)
{
    orvcore::serialization::detail::TableCodec<T>::Write(sink, value);
}

} // namespace kinlet::detail
