#pragma once

#include <kinlet/Color.h>
#include <orvcore/json/shared/JSONTable.h>
#include <orvcore/text/shared/BinaryText.h>

namespace orvcore::serialization::detail {

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

// Bytes as base-64 text.
struct BinaryTextCodec {
    static bool Read(const JSONNode& node, std::vector<std::uint8_t>& out)
    {
        std::string_view text;
        if (!node.Get(text)) {
            return false;
        }
        auto bytes = DecodeBinaryDataFromUTF8String(AsUTF8(text));
        if (bytes) {
            out = std::move(*bytes);
        }
        return bytes.has_value();
    }
    static void Write(JSONSink& sink, const std::vector<std::uint8_t>& value)
    {
        sink.String(AsNarrow(EncodeBinaryDataToUTF8String(value)));
    }
};

template <>
struct JSONTable<kinlet::ColorProfile> {
    static constexpr auto fields = Fields(Required("colorProfileName", &kinlet::ColorProfile::name),
                                          Required<BinaryTextCodec>("colorProfileData", &kinlet::ColorProfile::data));
};

template <>
struct JSONTable<kinlet::ColorSpaceMetadata> {
    static constexpr auto fields =
        Fields(Optional("metadataVersion", &kinlet::ColorSpaceMetadata::version),
               Optional("peakLuminance", &kinlet::ColorSpaceMetadata::peakLuminance),
               Optional("dataRangeInfoValid", &kinlet::ColorSpaceMetadata::dataRangeInfoValid));
};

// Sparse: what equals its default is left out.
template <class Member>
constexpr auto DiffersFromDefault(Member kinlet::ColorSpace::*member)
{
    return [member](const kinlet::ColorSpace& space) { return space.*member != Member(); };
}

template <class Member>
constexpr auto SparseField(std::string_view key, Member kinlet::ColorSpace::*member)
{
    return Optional(key, member).WrittenWhen(DiffersFromDefault(member));
}

template <>
struct JSONTable<kinlet::ColorSpace> {
    static constexpr auto fields = Fields(SparseField("baseColorProfile", &kinlet::ColorSpace::baseColorProfile),
                                          SparseField("baseProfileType", &kinlet::ColorSpace::baseProfileType),
                                          SparseField("colorSpaceLinearized", &kinlet::ColorSpace::linearized),
                                          SparseField("colorSpaceMetadata", &kinlet::ColorSpace::metadata));
};

} // namespace orvcore::serialization::detail
