#include "FullRecords.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using namespace std::string_view_literals;
using kinlet::SourceInfo;
using orvcore::serialization::GetJSONUTF8String;
using orvcore::serialization::JSONParse;
using orvcore::serialization::Object;
using orvcore::serialization::Variant;

constexpr std::u8string_view kRequiredKeys[] = {u8"parentprojectfile",
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

constexpr std::u8string_view kOptionalKeys[] = {u8"mediaproducerdescription",
                                                u8"alphachanneltype",
                                                u8"nativefieldtype",
                                                u8"currenttime",
                                                u8"workinpoint",
                                                u8"workoutpoint",
                                                u8"starttime",
                                                u8"isdropframe",
                                                u8"isxmpwritable",
                                                u8"inpoint",
                                                u8"outpoint",
                                                u8"ismedia",
                                                u8"supportsvideorenderingsessions",
                                                u8"appspecificsourceinfo",
                                                u8"capsuleparams",
                                                u8"veldenassetrequestinfo",
                                                u8"veldenproductionrequestinfo",
                                                u8"colorSpace",
                                                u8"hasFrozenUnstretchableRegions",
                                                u8"teamProjectName",
                                                u8"graphicsWhiteLuminance",
                                                u8"colorAwareEffectsEnabled",
                                                u8"enableLogColorManagement",
                                                u8"missingassets",
                                                u8"sourceBitrate",
                                                u8"contentcredentialsinfo"};

// A "sourceInfo" as the second release wrote it.
constexpr std::u8string_view kOldDocument = u8R"({
"parentprojectfile":"C:\\Users\\author\\Documents\\project.tsgraphic","name":"Classic Title",
"mediaproducerdescription":"Tessel","id":"c8f55408-46ee-5461-8940-53cf87a7ab88",
"duration":{"value":1270080000000,"scale":254016000000},"pixelaspectratio":{"numerator":10,"denominator":11},
"alphachanneltype":1,"framesize":{"topleft":{"x":0,"y":0},"size":{"x":720,"y":480}},
"framerate":{"ticksperframe":8475667200},
"pixelformatlist":[{"fourcc":1111970369,"properties":0},{"fourcc":1111970370,"properties":3}],
"fieldtype":0,"nativefieldtype":0,"audiochannellayout":[{"channellabel":100},{"channellabel":101}],
"audiosamplerate":{"ticksperframe":5292000},"initialcontentstate":"ed93fb47-78b4-5c72-94b1-4a623327eb9a",
"hasaudio":false,"hasvideo":true,"currenttime":{"value":0,"scale":254016000000},
"workinpoint":{"value":0,"scale":254016000000},"workoutpoint":{"value":1270080000000,"scale":254016000000},
"alphamattecolorr":0.0,"alphamattecolorg":0.1,"alphamattecolorb":1.0,"starttime":{"value":0,"scale":254016000000},
"isdropframe":true,"isxmpwritable":false,"inpoint":{"value":0,"scale":254016000000},
"outpoint":{"value":1270080000000,"scale":254016000000},"ismedia":false,"supportsvideorenderingsessions":true,
"appspecificsourceinfo":"","somethingElse":[1,{}]})";

Object FullObject()
{
    return std::any_cast<Object>(kinlet::ToJSON(RecordFiller(1).SourceInfo()));
}

Object With(Object object, std::u8string_view key, std::u8string_view json)
{
    object[std::u8string(key)] = std::make_shared<Variant>(JSONParse(json));
    return object;
}

TEST(SourceInfo, EveryFieldSurvives)
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        const SourceInfo record = RecordFiller(seed).SourceInfo();
        EXPECT_EQ(ThroughText(record), record) << seed;
    }
    EXPECT_EQ(ThroughText(SourceInfo()), SourceInfo());
}

// One table serves both directions, so that two rows exchanged would cancel each other out in a round trip.
TEST(SourceInfo, EachKeyIsThatOfItsField)
{
    struct Case {
        std::u8string_view key;
        std::u8string_view json;
        void (*set)(SourceInfo&);
    };
    const Case cases[] = {
        {u8"parentprojectfile", u8R"("/p")", [](SourceInfo& r) { r.parentProjectFile = u8"/p"; }},
        {u8"name", u8R"("n")", [](SourceInfo& r) { r.name = u"n"; }},
        {u8"mediaproducerdescription", u8R"("m")", [](SourceInfo& r) { r.mediaProducerDescription = u"m"; }},
        {u8"teamProjectName", u8R"("t")", [](SourceInfo& r) { r.teamProjectName = u"t"; }},
        {u8"appspecificsourceinfo", u8R"("a")", [](SourceInfo& r) { r.appSpecificSourceInfo = u8"a"; }},
        {u8"contentcredentialsinfo", u8R"("c")", [](SourceInfo& r) { r.contentCredentialsInfo = u8"c"; }},
        {u8"id", u8R"("00000000-0000-0000-0000-000000000001")", [](SourceInfo& r) { r.id.bytes[15] = 1; }},
        {u8"initialcontentstate", u8R"("00000000-0000-0000-0000-000000000001")",
         [](SourceInfo& r) { r.initialContentState.bytes[15] = 1; }},
        {u8"alphachanneltype", u8"7", [](SourceInfo& r) { r.alphaChannelType = kinlet::AlphaChannelType{7}; }},
        {u8"fieldtype", u8"7", [](SourceInfo& r) { r.fieldType = kinlet::FieldType{7}; }},
        {u8"nativefieldtype", u8"7", [](SourceInfo& r) { r.nativeFieldType = kinlet::FieldType{7}; }},
        {u8"duration", u8R"({"value":1,"scale":2})",
         [](SourceInfo& r) {
             r.duration = {1, 2};
         }},
        {u8"currenttime", u8R"({"value":1,"scale":2})",
         [](SourceInfo& r) {
             r.currentTime = {1, 2};
         }},
        {u8"workinpoint", u8R"({"value":1,"scale":2})",
         [](SourceInfo& r) {
             r.workInPoint = {1, 2};
         }},
        {u8"workoutpoint", u8R"({"value":1,"scale":2})",
         [](SourceInfo& r) {
             r.workOutPoint = {1, 2};
         }},
        {u8"starttime", u8R"({"value":1,"scale":2})",
         [](SourceInfo& r) {
             r.startTime = {1, 2};
         }},
        {u8"inpoint", u8R"({"value":1,"scale":2})",
         [](SourceInfo& r) {
             r.inPoint = {1, 2};
         }},
        {u8"outpoint", u8R"({"value":1,"scale":2})",
         [](SourceInfo& r) {
             r.outPoint = {1, 2};
         }},
        {u8"framerate", u8R"({"ticksperframe":3})", [](SourceInfo& r) { r.frameRate.ticksPerFrame = 3; }},
        {u8"audiosamplerate", u8R"({"ticksperframe":3})", [](SourceInfo& r) { r.audioSampleRate.ticksPerFrame = 3; }},
        {u8"framesize", u8R"({"topleft":{"x":1,"y":2},"size":{"x":3,"y":4}})",
         [](SourceInfo& r) {
             r.frameSize = {{1, 2}, {3, 4}};
         }},
        {u8"pixelformatlist", u8R"([{"fourcc":1,"properties":2}])",
         [](SourceInfo& r) {
             r.pixelFormats = {{1, 2}};
         }},
        {u8"alphamattecolorr", u8"0.5", [](SourceInfo& r) { r.alphaMatteColorRed = 0.5; }},
        {u8"alphamattecolorg", u8"0.5", [](SourceInfo& r) { r.alphaMatteColorGreen = 0.5; }},
        {u8"alphamattecolorb", u8"0.5", [](SourceInfo& r) { r.alphaMatteColorBlue = 0.5; }},
        {u8"hasaudio", u8"true", [](SourceInfo& r) { r.hasAudio = true; }},
        {u8"hasvideo", u8"true", [](SourceInfo& r) { r.hasVideo = true; }},
        {u8"isdropframe", u8"true", [](SourceInfo& r) { r.isDropFrame = true; }},
        {u8"isxmpwritable", u8"true", [](SourceInfo& r) { r.isXMPWritable = true; }},
        {u8"ismedia", u8"true", [](SourceInfo& r) { r.isMedia = true; }},
        {u8"supportsvideorenderingsessions", u8"true", [](SourceInfo& r) { r.supportsVideoRenderingSessions = true; }},
        {u8"hasFrozenUnstretchableRegions", u8"true", [](SourceInfo& r) { r.hasFrozenUnstretchableRegions = true; }},
        {u8"enableLogColorManagement", u8"true", [](SourceInfo& r) { r.enableLogColorManagement = true; }},
        {u8"sourceBitrate", u8"5", [](SourceInfo& r) { r.sourceBitrate = 5; }},
        {u8"graphicsWhiteLuminance", u8"5", [](SourceInfo& r) { r.graphicsWhiteLuminance = 5; }},
        {u8"missingassets",
         u8R"({"missAssetsOfflineMasks":9,"missAssetsPropMissingPlugins":[{"missAssetPropPluginMatchName":"p"}],)"
         u8R"("missAssetsPropMissingFootage":[{"missAssetPropFootagePath":"f"}],"missAssetsPropMissingFonts":[)"
         u8R"({"missAssetPropFontFamily":"a","missAssetPropFontStyle":"b","missAssetPropFontPostScript":"c",)"
         u8R"("missAssetPropFontFullName":"d","missAssetPropFontType":5}]})",
         [](SourceInfo& r) {
             r.missingAssets = {{{u"a", u"b", u"c", u"d", 5}}, {{u"p"}}, {{u8"f"}}, 9};
         }},
        {u8"veldenassetrequestinfo",
         u8R"({"mServerConnectInfo":{"mServerDiscoveryURL":"a","mEARPort":"b","mUserName":"c","mAuthToken":"d",)"
         u8R"("mAuthTokenType":"e","mHeaders":[["f","g"]]},"mAssetInfo":{"mProductionIdentifier":"h",)"
         u8R"("mProductionRevision":"i","mAssetIdentifier":"j"}})",
         [](SourceInfo& r) {
             r.assetRequest = {{u"a", u"b", u"c", u"d", u"e", {{u"f", u"g"}}}, {u"h", u"i", u"j"}};
         }},
        {u8"veldenproductionrequestinfo",
         u8R"({"mProductionInfo":{"mProductionIdentifier":"h","mRevision":"i","mDisplayName":"j"},)"
         u8R"("mCreateNewProduction":true,"mServerConnectInfo":{"mUserName":"c"}})",
         [](SourceInfo& r) {
             r.productionRequest = {{{}, {}, u"c", {}, {}, {}}, {u"h", u"i", u"j"}, true};
         }},
    };
    const Object defaults = std::any_cast<Object>(kinlet::ToJSON(SourceInfo()));
    for (const Case& c : cases) {
        SourceInfo expected;
        c.set(expected);
        ASSERT_NE(expected, SourceInfo()) << orvcore::AsNarrow(c.key);
        SourceInfo read;
        ASSERT_TRUE(kinlet::FromJSON(With(defaults, c.key, c.json), read));
        EXPECT_EQ(read, expected) << orvcore::AsNarrow(c.key);
    }
}

TEST(SourceInfo, AllKeysAndNoOthersAreAlwaysWritten)
{
    std::vector<std::u8string> expected(std::begin(kRequiredKeys), std::end(kRequiredKeys));
    expected.insert(expected.end(), std::begin(kOptionalKeys), std::end(kOptionalKeys));
    ASSERT_EQ(expected.size(), 43U);
    std::sort(expected.begin(), expected.end());
    for (const Object& object : {std::any_cast<Object>(kinlet::ToJSON(SourceInfo())), FullObject()}) {
        std::vector<std::u8string> written;
        for (const auto& [key, value] : object) {
            written.push_back(key);
        }
        EXPECT_EQ(written, expected);
    }
}

TEST(SourceInfo, RequiredKeysMustBeThere)
{
    for (const std::u8string_view key : kRequiredKeys) {
        Object object = FullObject();
        object.erase(std::u8string(key));
        EXPECT_EQ(MissingKey<SourceInfo>(object), orvcore::AsNarrow(key));
    }
}

TEST(SourceInfo, AnAbsentOptionalKeyLeavesTheDefault)
{
    const Object defaults = std::any_cast<Object>(kinlet::ToJSON(SourceInfo()));
    for (const std::u8string_view key : kOptionalKeys) {
        Object object = FullObject();
        object.erase(std::u8string(key));
        SourceInfo record = RecordFiller(2).SourceInfo();
        ASSERT_TRUE(kinlet::FromJSON(object, record)) << orvcore::AsNarrow(key);
        // The key's field has its default, and all others what the document says.
        object[std::u8string(key)] = defaults.at(std::u8string(key));
        EXPECT_EQ(ToText(record), orvcore::AsNarrow(GetJSONUTF8String(Variant(object), false)));
    }
}

TEST(SourceInfo, AnUnusableValueIsReportedUnderItsKey)
{
    std::vector<std::u8string_view> keys(std::begin(kRequiredKeys), std::end(kRequiredKeys));
    keys.insert(keys.end(), std::begin(kOptionalKeys), std::end(kOptionalKeys));
    for (const std::u8string_view key : keys) {
        for (const std::u8string_view unusable : {u8"null"sv, u8"[[]]"sv}) {
            EXPECT_EQ(MissingKey<SourceInfo>(With(FullObject(), key, unusable)), orvcore::AsNarrow(key));
        }
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
    SourceInfo untouched = RecordFiller(3).SourceInfo();
    EXPECT_FALSE(kinlet::FromJSON(JSONParse(u8"[]"), untouched));
    EXPECT_THROW(kinlet::FromJSON(JSONParse(u8"{}"), untouched), orvcore::serialization::missing_key_exception);
    EXPECT_EQ(untouched, RecordFiller(3).SourceInfo());
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

TEST(SourceInfo, DocumentsOfOlderProducersLoad)
{
    const auto record = FromText<SourceInfo>(kOldDocument);
    EXPECT_EQ(record.parentProjectFile, u8"C:\\Users\\author\\Documents\\project.tsgraphic");
    EXPECT_EQ(record.pixelAspectRatio, (kinlet::PixelAspectRatio{10, 11}));
    EXPECT_EQ(record.frameSize.size, (kinlet::Point{720, 480}));
    EXPECT_EQ(record.workOutPoint.ToMilliseconds(), 5000);
    EXPECT_EQ(record.alphaMatteColorGreen, 0.1);
    EXPECT_TRUE(record.isDropFrame);
    EXPECT_EQ(record.missingAssets, kinlet::MissingAssets());
    EXPECT_EQ(record.graphicsWhiteLuminance, kinlet::kDefaultGraphicsWhiteLuminance);
    EXPECT_EQ(ThroughText(record), record);
    EXPECT_EQ(ToText(record).find("somethingElse"), std::string::npos);
}

TEST(SourceInfo, OneFlagIsANumberAndItsNeighbourAFlag)
{
    SourceInfo record;
    record.colorAwareEffectsEnabled = true;
    record.enableLogColorManagement = true;
    const std::string text = ToText(record);
    EXPECT_THAT(text, testing::HasSubstr(R"("colorAwareEffectsEnabled":1,)"));
    EXPECT_THAT(text, testing::HasSubstr(R"("enableLogColorManagement":true,)"));
    EXPECT_THAT(ToText(SourceInfo()), testing::HasSubstr(R"("colorAwareEffectsEnabled":0,)"));
    for (const std::u8string_view number : {u8"1"sv, u8"1.0"sv, u8"7"sv}) {
        SourceInfo read;
        ASSERT_TRUE(kinlet::FromJSON(With(FullObject(), u8"colorAwareEffectsEnabled", number), read));
        EXPECT_TRUE(read.colorAwareEffectsEnabled);
    }
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
