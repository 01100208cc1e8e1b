#pragma once

#include <kinlet/shared/RecordJSON.h>
#include <orvcore/text/shared/BinaryText.h>

#include <string>

// The tables of the records that only this library reads and writes, by subject: units, colour, what a source delivers,
// remote requests, missing assets, the source itself, placed templates, edited texts, spreadsheets.
//
// Keys, and which of them are required, are the format's (docs/definition-format.md), with all differences in spelling
// and case: they stand in documents that exist.
namespace orvcore::serialization::detail {

template <>
struct JSONTable<kinlet::Time> {
    static constexpr auto fields =
        Fields(Required("value", &kinlet::Time::value), Required("scale", &kinlet::Time::scale));
};

// The frame rate's form and the sample rate's.
template <>
struct JSONTable<kinlet::FrameRate> {
    static constexpr auto fields = Fields(Required("ticksperframe", &kinlet::FrameRate::ticksPerFrame));
};

template <>
struct JSONTable<kinlet::PixelAspectRatio> {
    static constexpr auto fields = Fields(Required("numerator", &kinlet::PixelAspectRatio::numerator),
                                          Required("denominator", &kinlet::PixelAspectRatio::denominator));
};

template <>
struct JSONTable<kinlet::Rect> {
    static constexpr auto fields =
        Fields(Required("topleft", &kinlet::Rect::topLeft), Required("size", &kinlet::Rect::size));
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

template <>
struct JSONTable<kinlet::PixelFormat> {
    static constexpr auto fields = Fields(Required("fourcc", &kinlet::PixelFormat::fourCC),
                                          Required("properties", &kinlet::PixelFormat::properties));
};

template <>
struct JSONTable<kinlet::ChannelLabel> {
    static constexpr auto fields = Fields(Required("channellabel", &kinlet::ChannelLabel::label));
};

// An array of [name, value] pairs, since a name may come twice. An object of name to value reads as well.
struct HeadersCodec {
    using Headers = std::vector<std::pair<UTF16String, UTF16String>>;
    static bool Read(const JSONNode& node, Headers& out)
    {
        if (!node.IsArray() && !node.IsObject()) {
            return false;
        }
        out.clear();
        for (const JSONNode& child : node.Children()) {
            auto& header = out.emplace_back();
            if (node.IsObject()) {
                header.first = ToUTF16(child.Key());
                if (!Codec<UTF16String>::Read(child, header.second)) {
                    return false;
                }
            } else if (!ReadPair(child, header)) {
                return false;
            }
        }
        return true;
    }
    static void Write(JSONSink& sink, const Headers& value)
    {
        sink.BeginArray();
        for (const auto& [name, content] : value) {
            sink.BeginArray();
            sink.String(std::u16string_view(name));
            sink.String(std::u16string_view(content));
            sink.EndArray();
        }
        sink.EndArray();
    }

private:
    static bool ReadPair(const JSONNode& node, Headers::value_type& out)
    {
        const auto parts = node.Children();
        return node.IsArray() && parts.size() == 2 && Codec<UTF16String>::Read(parts[0], out.first) &&
               Codec<UTF16String>::Read(parts[1], out.second);
    }
};

// A text; a whole number reads as its digits, since servers number their revisions.
struct RevisionCodec {
    static bool Read(const JSONNode& node, UTF16String& out)
    {
        std::int64_t number = 0;
        if (!node.Get(number)) {
            return Codec<UTF16String>::Read(node, out);
        }
        out = ToUTF16(std::string_view(std::to_string(number)));
        return true;
    }
    static void Write(JSONSink& sink, const UTF16String& value)
    {
        sink.String(std::u16string_view(value));
    }
};

template <>
struct JSONTable<kinlet::ServerConnection> {
    static constexpr auto fields =
        Fields(Optional("mServerDiscoveryURL", &kinlet::ServerConnection::serverDiscoveryURL),
               Optional("mEARPort", &kinlet::ServerConnection::earPort),
               Optional("mUserName", &kinlet::ServerConnection::userName),
               Optional("mAuthToken", &kinlet::ServerConnection::authToken),
               Optional("mAuthTokenType", &kinlet::ServerConnection::authTokenType),
               Optional<HeadersCodec>("mHeaders", &kinlet::ServerConnection::headers));
};

template <>
struct JSONTable<kinlet::RemoteAssetInfo> {
    static constexpr auto fields =
        Fields(Optional("mProductionIdentifier", &kinlet::RemoteAssetInfo::productionIdentifier),
               Optional<RevisionCodec>("mProductionRevision", &kinlet::RemoteAssetInfo::productionRevision),
               Optional("mAssetIdentifier", &kinlet::RemoteAssetInfo::assetIdentifier));
};

template <>
struct JSONTable<kinlet::RemoteProductionInfo> {
    static constexpr auto fields =
        Fields(Optional("mProductionIdentifier", &kinlet::RemoteProductionInfo::productionIdentifier),
               Optional<RevisionCodec>("mRevision", &kinlet::RemoteProductionInfo::revision),
               Optional("mDisplayName", &kinlet::RemoteProductionInfo::displayName));
};

template <>
struct JSONTable<kinlet::RemoteAssetRequest> {
    static constexpr auto fields = Fields(Optional("mServerConnectInfo", &kinlet::RemoteAssetRequest::serverConnection),
                                          Optional("mAssetInfo", &kinlet::RemoteAssetRequest::assetInfo));
};

template <>
struct JSONTable<kinlet::RemoteProductionRequest> {
    static constexpr auto fields =
        Fields(Optional("mServerConnectInfo", &kinlet::RemoteProductionRequest::serverConnection),
               Optional("mProductionInfo", &kinlet::RemoteProductionRequest::productionInfo),
               Optional("mCreateNewProduction", &kinlet::RemoteProductionRequest::createNewProduction));
};

template <>
struct JSONTable<kinlet::MissingFont> {
    static constexpr auto fields = Fields(Optional("missAssetPropFontFamily", &kinlet::MissingFont::family),
                                          Optional("missAssetPropFontStyle", &kinlet::MissingFont::style),
                                          Optional("missAssetPropFontPostScript", &kinlet::MissingFont::postScriptName),
                                          Optional("missAssetPropFontFullName", &kinlet::MissingFont::fullName),
                                          Optional("missAssetPropFontType", &kinlet::MissingFont::type));
};

template <>
struct JSONTable<kinlet::MissingPlugin> {
    static constexpr auto fields = Fields(Optional("missAssetPropPluginMatchName", &kinlet::MissingPlugin::matchName));
};

template <>
struct JSONTable<kinlet::MissingFootage> {
    static constexpr auto fields = Fields(Optional("missAssetPropFootagePath", &kinlet::MissingFootage::path));
};

template <>
struct JSONTable<kinlet::MissingAssets> {
    static constexpr auto fields = Fields(Optional("missAssetsPropMissingFonts", &kinlet::MissingAssets::fonts),
                                          Optional("missAssetsPropMissingPlugins", &kinlet::MissingAssets::plugins),
                                          Optional("missAssetsPropMissingFootage", &kinlet::MissingAssets::footage),
                                          Optional("missAssetsOfflineMasks", &kinlet::MissingAssets::offlineMasks));
};

// A flag that the format keeps as the number 0 or 1. Any other number that is not negative reads as set.
struct FlagNumberCodec {
    static bool Read(const JSONNode& node, bool& out)
    {
        std::uint64_t number = 0;
        const bool usable = node.Get(number);
        out = number != 0;
        return usable;
    }
    static void Write(JSONSink& sink, bool value)
    {
        sink.UInt(value ? 1 : 0);
    }
};

template <>
struct JSONTable<kinlet::SourceInfo> {
    using R = kinlet::SourceInfo;
    // clang-format off
    static constexpr auto fields = Fields(
        Required("parentprojectfile", &R::parentProjectFile),
        Required("name", &R::name),
        Optional("mediaproducerdescription", &R::mediaProducerDescription),
        Required("id", &R::id),
        Required("duration", &R::duration),
        Required("pixelaspectratio", &R::pixelAspectRatio),
        Optional("alphachanneltype", &R::alphaChannelType),
        Required("framesize", &R::frameSize),
        Required("framerate", &R::frameRate),
        Required("pixelformatlist", &R::pixelFormats),
        Required("fieldtype", &R::fieldType),
        Optional("nativefieldtype", &R::nativeFieldType),
        Required("audiochannellayout", &R::audioChannelLayout),
        Required("audiosamplerate", &R::audioSampleRate),
        Required("initialcontentstate", &R::initialContentState),
        Required("hasaudio", &R::hasAudio),
        Required("hasvideo", &R::hasVideo),
        Optional("currenttime", &R::currentTime),
        Optional("workinpoint", &R::workInPoint),
        Optional("workoutpoint", &R::workOutPoint),
        Required("alphamattecolorr", &R::alphaMatteColorRed),
        Required("alphamattecolorg", &R::alphaMatteColorGreen),
        Required("alphamattecolorb", &R::alphaMatteColorBlue),
        Optional("starttime", &R::startTime),
        Optional("isdropframe", &R::isDropFrame),
        Optional("isxmpwritable", &R::isXMPWritable),
        Optional("inpoint", &R::inPoint),
        Optional("outpoint", &R::outPoint),
        Optional("ismedia", &R::isMedia),
        Optional("supportsvideorenderingsessions", &R::supportsVideoRenderingSessions),
        Optional("appspecificsourceinfo", &R::appSpecificSourceInfo),
        Optional("capsuleparams", &R::capsuleParams),
        Optional("veldenassetrequestinfo", &R::assetRequest),
        Optional("veldenproductionrequestinfo", &R::productionRequest),
        Optional("colorSpace", &R::colorSpace),
        Optional("hasFrozenUnstretchableRegions", &R::hasFrozenUnstretchableRegions),
        Optional("teamProjectName", &R::teamProjectName),
        Optional("graphicsWhiteLuminance", &R::graphicsWhiteLuminance),
        Optional<FlagNumberCodec>("colorAwareEffectsEnabled", &R::colorAwareEffectsEnabled),
        Optional("enableLogColorManagement", &R::enableLogColorManagement),
        Optional("missingassets", &R::missingAssets),
        Optional("sourceBitrate", &R::sourceBitrate),
        Optional("contentcredentialsinfo", &R::contentCredentialsInfo));
    // clang-format on
};

// The JSON kind tells the alternative: a number without fraction and exponent is a whole number.
template <>
struct Codec<kinlet::CapsuleParamValue> {
    static bool Read(const JSONNode& node, kinlet::CapsuleParamValue& out)
    {
        switch (node.Kind()) {
        case JSONKind::kBool:
            return ReadAs<bool>(node, out);
        case JSONKind::kInt64:
            return ReadAs<std::int64_t>(node, out);
        case JSONKind::kUInt64:
        case JSONKind::kDouble:
            return ReadAs<double>(node, out);
        case JSONKind::kString:
            return ReadAs<UTF16String>(node, out);
        case JSONKind::kArray:
            return ReadAs<std::vector<double>>(node, out);
        case JSONKind::kNull:
        case JSONKind::kObject:
            break;
        }
        return false;
    }
    static void Write(JSONSink& sink, const kinlet::CapsuleParamValue& value)
    {
        std::visit([&sink](const auto& held) { Codec<std::remove_cvref_t<decltype(held)>>::Write(sink, held); }, value);
    }

private:
    template <class T>
    static bool ReadAs(const JSONNode& node, kinlet::CapsuleParamValue& out)
    {
        return Codec<T>::Read(node, out.emplace<T>());
    }
};

template <>
struct JSONTable<kinlet::CapsuleParam> {
    static constexpr auto fields =
        Fields(Optional("id", &kinlet::CapsuleParam::id), Optional("value", &kinlet::CapsuleParam::value));
    static constexpr auto unknown = &kinlet::CapsuleParam::unknownKeys;
};

template <>
struct JSONTable<kinlet::CapsuleParams> {
    static constexpr auto fields = Fields(Optional("capsuleID", &kinlet::CapsuleParams::capsuleID),
                                          Optional("params", &kinlet::CapsuleParams::params));
    static constexpr auto unknown = &kinlet::CapsuleParams::unknownKeys;
};

template <>
struct JSONTable<kinlet::SourceTextFontEditInfo> {
    static constexpr auto fields = Fields(Optional("fontEditable", &kinlet::SourceTextFontEditInfo::fontEditable),
                                          Optional("sizeEditable", &kinlet::SourceTextFontEditInfo::sizeEditable),
                                          Optional("styleEditable", &kinlet::SourceTextFontEditInfo::styleEditable),
                                          Optional("fontName", &kinlet::SourceTextFontEditInfo::fontName),
                                          Optional("fontSize", &kinlet::SourceTextFontEditInfo::fontSize),
                                          Optional("bold", &kinlet::SourceTextFontEditInfo::bold),
                                          Optional("italic", &kinlet::SourceTextFontEditInfo::italic),
                                          Optional("allCaps", &kinlet::SourceTextFontEditInfo::allCaps),
                                          Optional("smallCaps", &kinlet::SourceTextFontEditInfo::smallCaps));
    static constexpr auto unknown = &kinlet::SourceTextFontEditInfo::unknownKeys;
};

template <>
struct JSONTable<kinlet::TextStyleRun> {
    static constexpr auto fields = Fields(
        Optional("length", &kinlet::TextStyleRun::length), Optional("fontName", &kinlet::TextStyleRun::fontName),
        Optional("fontSize", &kinlet::TextStyleRun::fontSize), Optional("fillColor", &kinlet::TextStyleRun::fillColor));
    static constexpr auto unknown = &kinlet::TextStyleRun::unknownKeys;
};

template <>
struct JSONTable<kinlet::TextEditInfo> {
    static constexpr auto fields = Fields(Optional("text", &kinlet::TextEditInfo::text),
                                          Optional("overrideType", &kinlet::TextEditInfo::overrideType),
                                          Optional("fontEditInfo", &kinlet::TextEditInfo::fontEditInfo),
                                          Optional("styleRuns", &kinlet::TextEditInfo::styleRuns));
    static constexpr auto unknown = &kinlet::TextEditInfo::unknownKeys;
};

// null, text, number, true/false; a date is the object {"date": "YYYY-MM-DD"}, which no text can be mistaken for.
template <>
struct Codec<kinlet::SpreadsheetCell> {
    ORVPLATFORM_API static bool Read(const JSONNode& node, kinlet::SpreadsheetCell& out);
    ORVPLATFORM_API static void Write(JSONSink& sink, const kinlet::SpreadsheetCell& value);
};

template <>
struct JSONTable<kinlet::SpreadsheetColumnInfo> {
    static constexpr auto fields = Fields(Required("columnDataType", &kinlet::SpreadsheetColumnInfo::dataType),
                                          Required("columnName", &kinlet::SpreadsheetColumnInfo::name),
                                          Required("columnMinValue", &kinlet::SpreadsheetColumnInfo::minValue),
                                          Required("columnMaxValue", &kinlet::SpreadsheetColumnInfo::maxValue));
};

template <>
struct JSONTable<kinlet::SpreadsheetData> {
    static constexpr auto fields = Fields(Optional("activeRows", &kinlet::SpreadsheetData::activeRows),
                                          Optional("columnValues", &kinlet::SpreadsheetData::columnValues));
    static constexpr auto unknown = &kinlet::SpreadsheetData::unknownKeys;
};

} // namespace orvcore::serialization::detail
