#pragma once

#include <kinlet/SourceInfo.h>
#include <kinlet/detail/MediaFormatJSON.h>
#include <kinlet/detail/MissingAssetsJSON.h>
#include <kinlet/detail/RemoteRequestsJSON.h>
#include <kinlet/detail/TimeJSON.h>
#include <kinlet/shared/ColorJSON.h>
#include <kinlet/shared/GeometryJSON.h>
#include <kinlet/shared/RecordCodecs.h>

namespace orvcore::serialization::detail {

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

} // namespace orvcore::serialization::detail
