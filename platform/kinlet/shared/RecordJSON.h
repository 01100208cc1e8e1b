#pragma once

#include <kinlet/MediaReplacementProperties.h>
#include <kinlet/SourceInfo.h>
#include <kinlet/Spreadsheet.h>
#include <kinlet/TextEditInfo.h>
#include <orvcore/json/shared/JSONTable.h>

// How the media-link records that other records hold are read and written: the small ones' tables, and calls for the
// larger ones.

// The larger records' codecs. Their tables are compiled once, behind these calls: overloads, because a template over
// types that are not exported themselves would not be visible outside the library. `ReadRecord` replaces the record by
// what the node holds; it returns false when the node is no object, and raises missing_key_exception by the rules of
// the record's table. `CheckSourceInfo` returns and raises the same with nothing made: a template has a source for each
// language, and a listing shows one of them.
namespace kinlet::detail {

using orvcore::serialization::JSONNode;
using orvcore::serialization::JSONSink;

ORVPLATFORM_API bool CheckSourceInfo(const JSONNode& node);
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
    static bool Check(const JSONNode& node)
    {
        return kinlet::detail::CheckSourceInfo(node);
    }
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

template <>
struct JSONTable<kinlet::Point> {
    static constexpr auto fields = Fields(Required("x", &kinlet::Point::x), Required("y", &kinlet::Point::y));
};

template <>
struct JSONTable<kinlet::PointF> {
    static constexpr auto fields = Fields(Required("x", &kinlet::PointF::x), Required("y", &kinlet::PointF::y));
};

// An array of four numbers: red, green, blue, alpha.
template <>
struct Codec<kinlet::ColorRGBA> {
    static bool Read(const JSONNode& node, kinlet::ColorRGBA& out)
    {
        const auto parts = node.Children();
        return node.IsArray() && parts.size() == 4 && parts[0].Get(out.red) && parts[1].Get(out.green) &&
               parts[2].Get(out.blue) && parts[3].Get(out.alpha);
    }
    static void Write(JSONSink& sink, const kinlet::ColorRGBA& value)
    {
        sink.BeginArray();
        sink.Double(value.red);
        sink.Double(value.green);
        sink.Double(value.blue);
        sink.Double(value.alpha);
        sink.EndArray();
    }
};

// The rows lie in the object of the control that has the properties, among the control's own. A control's table takes
// them in with
//   std::tuple_cat(Lift<Control>(accessToProperties, JSONTable<kinlet::MediaReplacementProperties>::fields),
//                  Fields(...own rows...))
// and leads its `unknown` to the properties' unknown keys.
template <>
struct JSONTable<kinlet::MediaReplacementProperties> {
    static constexpr auto fields =
        Fields(Optional("replacementFit", &kinlet::MediaReplacementProperties::fit),
               Optional("replacementKinds", &kinlet::MediaReplacementProperties::mediaKinds),
               Optional("replacementTrimToSlot", &kinlet::MediaReplacementProperties::trimToSlot),
               Optional("replacementLayerID", &kinlet::MediaReplacementProperties::layerID));
    static constexpr auto unknown = &kinlet::MediaReplacementProperties::unknownKeys;
};

} // namespace orvcore::serialization::detail
