#include "Records.h"

#include <gmock/gmock.h>

#include <limits>
#include <set>

namespace {

using namespace std::string_view_literals;
using kinlet::SourceInfo;
using orvcore::serialization::GetJSONUTF8String;
using orvcore::serialization::JSONParse;
using orvcore::serialization::Object;
using orvcore::serialization::Variant;

const std::set<std::u8string_view> kRequiredKeys = {u8"parentprojectfile",
                                                    u8"name",
                                                    u8"id",
                                                    u8"duration",
                                                    u8"pixelaspectratio",
                                                    u8"framesize",
                                                    u8"framerate",
                                                    u8"pixelformatlist",
                                                    u8"fieldtype",
                                                    u8"audiochannellayout",
                                                    u8"audiosamplerate",
                                                    u8"initialcontentstate",
                                                    u8"hasaudio",
                                                    u8"hasvideo",
                                                    u8"alphamattecolorr",
                                                    u8"alphamattecolorg",
                                                    u8"alphamattecolorb"};

// All 43 keys, with a value of its own wherever two fields are of one kind.
constexpr std::string_view kFullDocument =
    R"({"alphachanneltype":7,"alphamattecolorb":0.75,"alphamattecolorg":0.5,"alphamattecolorr":0.25,)"
    R"("appspecificsourceinfo":"app","audiochannellayout":[{"channellabel":100}],)"
    R"("audiosamplerate":{"ticksperframe":4},"capsuleparams":{"capsuleID":"cap","params":[]},)"
    R"("colorAwareEffectsEnabled":1,"colorSpace":{"baseProfileType":3},"contentcredentialsinfo":"cred",)"
    R"("currenttime":{"scale":2,"value":11},"duration":{"scale":2,"value":10},)"
    R"("enableLogColorManagement":false,"fieldtype":8,"framerate":{"ticksperframe":3},)"
    R"("framesize":{"size":{"x":3,"y":4},"topleft":{"x":1,"y":2}},"graphicsWhiteLuminance":300,)"
    R"("hasFrozenUnstretchableRegions":false,"hasaudio":true,"hasvideo":false,)"
    R"("id":"00000000-0000-0000-0000-000000000001",)"
    R"("initialcontentstate":"00000000-0000-0000-0000-000000000002","inpoint":{"scale":2,"value":15},)"
    R"("isdropframe":false,"ismedia":false,"isxmpwritable":false,"mediaproducerdescription":"media",)"
    R"("missingassets":{"missAssetsOfflineMasks":9,)"
    R"("missAssetsPropMissingFonts":[{"missAssetPropFontFamily":"a","missAssetPropFontFullName":"d",)"
    R"("missAssetPropFontPostScript":"c","missAssetPropFontStyle":"b","missAssetPropFontType":5}],)"
    R"("missAssetsPropMissingFootage":[{"missAssetPropFootagePath":"f"}],)"
    R"("missAssetsPropMissingPlugins":[{"missAssetPropPluginMatchName":"p"}]},"name":"字",)"
    R"("nativefieldtype":9,"outpoint":{"scale":2,"value":16},"parentprojectfile":"/p",)"
    R"("pixelaspectratio":{"denominator":11,"numerator":10},"pixelformatlist":[{"fourcc":1,)"
    R"("properties":2},{"fourcc":3,"properties":0}],"sourceBitrate":5,"starttime":{"scale":2,)"
    R"("value":14},"supportsvideorenderingsessions":false,"teamProjectName":"team",)"
    R"("veldenassetrequestinfo":{"mAssetInfo":{"mAssetIdentifier":"j","mProductionIdentifier":"h",)"
    R"("mProductionRevision":"i"},"mServerConnectInfo":{"mAuthToken":"d","mAuthTokenType":"e",)"
    R"("mEARPort":"b","mHeaders":[["f","g"],["f","h"]],"mServerDiscoveryURL":"a","mUserName":"c"}},)"
    R"("veldenproductionrequestinfo":{"mCreateNewProduction":true,)"
    R"("mProductionInfo":{"mDisplayName":"m","mProductionIdentifier":"k","mRevision":"l"},)"
    R"("mServerConnectInfo":{"mAuthToken":"","mAuthTokenType":"","mEARPort":"","mHeaders":[],)"
    R"("mServerDiscoveryURL":"","mUserName":"u"}},"workinpoint":{"scale":2,"value":12},)"
    R"("workoutpoint":{"scale":2,"value":13}})";

SourceInfo FullRecord()
{
    SourceInfo r;
    r.parentProjectFile = u8"/p";
    r.name = u"\u5b57";
    r.mediaProducerDescription = u"media";
    r.id.bytes[15] = 1;
    r.initialContentState.bytes[15] = 2;
    kinlet::Time* const times[] = {&r.duration,  &r.currentTime, &r.workInPoint, &r.workOutPoint,
                                   &r.startTime, &r.inPoint,     &r.outPoint};
    for (std::int64_t i = 0; i < 7; ++i) {
        *times[i] = {10 + i, 2};
    }
    r.pixelAspectRatio = {10, 11};
    r.alphaChannelType = kinlet::AlphaChannelType{7};
    r.fieldType = kinlet::FieldType{8};
    r.nativeFieldType = kinlet::FieldType{9};
    r.frameSize = {{1, 2}, {3, 4}};
    r.frameRate = {3};
    r.audioSampleRate = {4};
    r.pixelFormats = {{1, 2}, {3, 0}};
    r.audioChannelLayout = {{100}};
    r.hasAudio = true;
    r.alphaMatteColorRed = 0.25;
    r.alphaMatteColorGreen = 0.5;
    r.alphaMatteColorBlue = 0.75;
    r.appSpecificSourceInfo = u8"app";
    r.capsuleParams.capsuleID = u"cap";
    r.assetRequest = {{u"a", u"b", u"c", u"d", u"e", {{u"f", u"g"}, {u"f", u"h"}}}, {u"h", u"i", u"j"}};
    r.productionRequest = {{{}, {}, u"u", {}, {}, {}}, {u"k", u"l", u"m"}, true};
    r.colorSpace.baseProfileType = 3;
    r.teamProjectName = u"team";
    r.graphicsWhiteLuminance = 300;
    r.missingAssets = {{{u"a", u"b", u"c", u"d", 5}}, {{u"p"}}, {{u8"f"}}, 9};
    r.colorAwareEffectsEnabled = true;
    r.sourceBitrate = 5;
    r.contentCredentialsInfo = u8"cred";
    return r;
}

Object FullObject()
{
    return std::any_cast<Object>(JSONParse(orvcore::AsUTF8(kFullDocument)));
}

Object With(Object object, std::u8string_view key, std::u8string_view json)
{
    object[std::u8string(key)] = std::make_shared<Variant>(JSONParse(json));
    return object;
}

// One table serves both directions, so that two rows exchanged would cancel each other out in a round trip.
TEST(SourceInfo, EachKeyIsThatOfItsField)
{
    EXPECT_EQ(ToText(FullRecord()), kFullDocument);
    EXPECT_EQ(FromText<SourceInfo>(orvcore::AsUTF8(kFullDocument)), FullRecord());
    EXPECT_EQ(ThroughText(SourceInfo()), SourceInfo());
    SourceInfo read;
    ASSERT_TRUE(kinlet::FromJSON(With(FullObject(), u8"somethingElse", u8"[1,{}]"), read));
    EXPECT_EQ(read, FullRecord()) << "what is not known is left out";
    for (const std::u8string_view number : {u8"1.0"sv, u8"7"sv}) {
        ASSERT_TRUE(kinlet::FromJSON(With(FullObject(), u8"colorAwareEffectsEnabled", number), read));
        EXPECT_EQ(read, FullRecord()) << "a flag that is a number";
    }
    const std::pair<std::u8string_view, bool SourceInfo::*> flags[] = {
        {u8"hasaudio", &SourceInfo::hasAudio},
        {u8"hasvideo", &SourceInfo::hasVideo},
        {u8"isdropframe", &SourceInfo::isDropFrame},
        {u8"isxmpwritable", &SourceInfo::isXMPWritable},
        {u8"ismedia", &SourceInfo::isMedia},
        {u8"supportsvideorenderingsessions", &SourceInfo::supportsVideoRenderingSessions},
        {u8"hasFrozenUnstretchableRegions", &SourceInfo::hasFrozenUnstretchableRegions},
        {u8"enableLogColorManagement", &SourceInfo::enableLogColorManagement},
    };
    for (const auto& [key, flag] : flags) {
        SourceInfo expected;
        expected.*flag = true;
        const Object defaults = std::any_cast<Object>(kinlet::ToJSON(SourceInfo()));
        ASSERT_TRUE(kinlet::FromJSON(With(defaults, key, u8"true"), read));
        EXPECT_EQ(read, expected) << orvcore::AsNarrow(key);
    }
}

TEST(SourceInfo, EachKeyIsWrittenAndRequiredOrHasItsDefault)
{
    const Object defaults = std::any_cast<Object>(kinlet::ToJSON(SourceInfo()));
    EXPECT_EQ(defaults.size(), 43U);
    for (const auto& [key, value] : FullObject()) {
        const std::string name(orvcore::AsNarrow(key));
        ASSERT_EQ(defaults.count(key), 1U) << name;
        for (const std::u8string_view unusable : {u8"null"sv, u8"[[]]"sv}) {
            EXPECT_EQ(MissingKey<SourceInfo>(With(FullObject(), key, unusable)), name);
        }
        Object object = FullObject();
        object.erase(key);
        if (kRequiredKeys.count(key) != 0) {
            EXPECT_EQ(MissingKey<SourceInfo>(object), name);
            continue;
        }
        SourceInfo record;
        record.isMedia = record.isDropFrame = true; // what was in the record is gone
        ASSERT_TRUE(kinlet::FromJSON(object, record)) << name;
        object[key] = defaults.at(key);
        EXPECT_EQ(ToText(record), orvcore::AsNarrow(GetJSONUTF8String(Variant(object), false)));
    }
}

TEST(SourceInfo, UnusableValuesInside)
{
    struct Case {
        std::u8string_view key;
        std::u8string_view json;
        std::string_view missing;
    };
    const Case cases[] = {
        {u8"duration", u8R"({"value":1})", "scale"},
        {u8"duration", u8R"({"value":1.5,"scale":1})", "value"},
        {u8"duration", u8R"({"value":9223372036854775808,"scale":1})", "value"},
        {u8"pixelaspectratio", u8R"({"numerator":4294967296,"denominator":1})", "numerator"},
        {u8"pixelaspectratio", u8R"({"numerator":1,"denominator":-1})", "denominator"},
        {u8"framesize", u8R"({"topleft":{"x":0,"y":0}})", "size"},
        {u8"framesize", u8R"({"topleft":{"x":0,"y":0},"size":{"x":2147483648,"y":0}})", "x"},
        {u8"framesize", u8R"({"topleft":{"x":0,"y":-2147483649},"size":{"x":0,"y":0}})", "y"},
        {u8"framerate", u8R"({})", "ticksperframe"},
        {u8"pixelformatlist", u8R"([{"fourcc":1,"properties":0},{"fourcc":-1,"properties":0}])", "fourcc"},
        {u8"pixelformatlist", u8R"([7])", "pixelformatlist"},
        {u8"audiochannellayout", u8R"([{}])", "channellabel"},
        {u8"id", u8R"("no identifier")", "id"},
        {u8"graphicsWhiteLuminance", u8"4294967296", "graphicsWhiteLuminance"},
        {u8"sourceBitrate", u8"-1", "sourceBitrate"},
        {u8"colorAwareEffectsEnabled", u8"true", "colorAwareEffectsEnabled"},
        {u8"enableLogColorManagement", u8"1", "enableLogColorManagement"},
        {u8"colorSpace", u8R"({"baseColorProfile":{"colorProfileName":""}})", "colorProfileData"},
        {u8"colorSpace", u8R"({"baseColorProfile":{"colorProfileName":"","colorProfileData":"A"}})",
         "colorProfileData"},
        {u8"missingassets", u8R"({"missAssetsPropMissingFonts":[{"missAssetPropFontType":"bold"}]})",
         "missAssetPropFontType"},
        {u8"veldenassetrequestinfo", u8R"({"mServerConnectInfo":{"mHeaders":[["name"]]}})", "mHeaders"},
        {u8"veldenassetrequestinfo", u8R"({"mServerConnectInfo":{"mEARPort":80}})", "mEARPort"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(MissingKey<SourceInfo>(With(FullObject(), c.key, c.json)), c.missing) << orvcore::AsNarrow(c.json);
    }
    SourceInfo untouched = FullRecord();
    EXPECT_FALSE(kinlet::FromJSON(JSONParse(u8"[]"), untouched));
    EXPECT_THROW(kinlet::FromJSON(JSONParse(u8"{}"), untouched), orvcore::serialization::missing_key_exception);
    EXPECT_EQ(untouched, FullRecord());
}

TEST(SourceInfo, NumbersReachBothEndsOfTheirRanges)
{
    SourceInfo record;
    record.duration = {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()};
    record.pixelAspectRatio = {std::numeric_limits<std::uint32_t>::max(), 0};
    record.frameSize.size = {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    record.pixelFormats = {{std::numeric_limits<std::uint64_t>::max(), 0}};
    record.fieldType = static_cast<kinlet::FieldType>(std::numeric_limits<std::int64_t>::min());
    record.graphicsWhiteLuminance = std::numeric_limits<std::uint32_t>::max();
    record.sourceBitrate = std::numeric_limits<std::uint64_t>::max();
    record.alphaMatteColorRed = std::numeric_limits<double>::denorm_min();
    record.alphaMatteColorGreen = -std::numeric_limits<double>::max();
    EXPECT_EQ(ThroughText(record), record);
}

TEST(ColorSpace, OnlyWhatDiffersFromTheDefaultIsWritten)
{
    using kinlet::ColorSpace;
    ColorSpace profile;
    profile.baseColorProfile = {u"P", {1, 2}};
    ColorSpace type;
    type.baseProfileType = 3;
    ColorSpace linear;
    linear.linearized = true;
    ColorSpace metadata;
    metadata.metadata.peakLuminance = 1000;
    const std::pair<ColorSpace, std::string_view> cases[] = {
        {ColorSpace(), "{}"},
        {profile, R"({"baseColorProfile":{"colorProfileData":"AQI=","colorProfileName":"P"}})"},
        {type, R"({"baseProfileType":3})"},
        {linear, R"({"colorSpaceLinearized":true})"},
        {metadata, R"({"colorSpaceMetadata":{"dataRangeInfoValid":false,"metadataVersion":0,"peakLuminance":1000}})"},
    };
    for (const auto& [space, text] : cases) {
        EXPECT_EQ(ToText(space), text);
        EXPECT_EQ(ThroughText(space), space);
    }
}

TEST(ServerConnection, HeadersReadAsPairsOrAsAnObject)
{
    using Headers = decltype(kinlet::ServerConnection::headers);
    const Headers expected = {{u"A", u"1"}, {u"B", u"2"}};
    EXPECT_EQ(FromText<kinlet::ServerConnection>(u8R"({"mHeaders":[["A","1"],["B","2"]]})").headers, expected);
    EXPECT_EQ(FromText<kinlet::ServerConnection>(u8R"({"mHeaders":{"A":"1","B":"2"}})").headers, expected);
    const auto request = FromText<kinlet::RemoteAssetRequest>(u8R"({"mAssetInfo":{"mProductionRevision":12}})");
    EXPECT_EQ(request.assetInfo.productionRevision, u"12");
}

} // namespace
