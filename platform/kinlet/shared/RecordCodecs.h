#pragma once

#include <kinlet/SourceInfo.h>
#include <kinlet/Spreadsheet.h>
#include <kinlet/TextEditInfo.h>
#include <orvcore/json/shared/JSONCodec.h>

// The larger records' codecs for other libraries of the project. Their tables are compiled once, behind these calls.
// `ReadRecord` replaces the record by what the node holds; it returns false when the node is no object, and raises
// missing_key_exception by the rules of the record's table.
namespace kinlet::detail {

using orvcore::serialization::JSONNode;
using orvcore::serialization::JSONSink;

ORVPLATFORM_API bool ReadRecord(const JSONNode& node, SourceInfo& out);
ORVPLATFORM_API void WriteRecord(JSONSink& sink, const SourceInfo& value);
ORVPLATFORM_API bool ReadRecord(const JSONNode& node, CapsuleParams& out);
ORVPLATFORM_API void WriteRecord(JSONSink& sink, const CapsuleParams& value);
ORVPLATFORM_API bool ReadRecord(const JSONNode& node, SourceTextFontEditInfo& out);
ORVPLATFORM_API void WriteRecord(JSONSink& sink, const SourceTextFontEditInfo& value);
ORVPLATFORM_API bool ReadRecord(const JSONNode& node, TextEditInfo& out);
ORVPLATFORM_API void WriteRecord(JSONSink& sink, const TextEditInfo& value);
ORVPLATFORM_API bool ReadRecord(const JSONNode& node, SpreadsheetData& out);
ORVPLATFORM_API void WriteRecord(JSONSink& sink, const SpreadsheetData& value);

template <class T>
struct RecordCodec {
    static bool Read(const JSONNode& node, T& out)
    {
        return ReadRecord(node, out);
    }
    static void Write(JSONSink& sink, const T& value)
    {
        WriteRecord(sink, value);
    }
};

} // namespace kinlet::detail

namespace orvcore::serialization::detail {

template <>
struct Codec<kinlet::SourceInfo> : kinlet::detail::RecordCodec<kinlet::SourceInfo> {
};
template <>
struct Codec<kinlet::CapsuleParams> : kinlet::detail::RecordCodec<kinlet::CapsuleParams> {
};
template <>
struct Codec<kinlet::SourceTextFontEditInfo> : kinlet::detail::RecordCodec<kinlet::SourceTextFontEditInfo> {
};
template <>
struct Codec<kinlet::TextEditInfo> : kinlet::detail::RecordCodec<kinlet::TextEditInfo> {
};
template <>
struct Codec<kinlet::SpreadsheetData> : kinlet::detail::RecordCodec<kinlet::SpreadsheetData> {
};

} // namespace orvcore::serialization::detail
