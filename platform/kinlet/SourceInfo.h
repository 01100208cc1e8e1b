#pragma once

#include <kinlet/CapsuleParams.h>
#include <kinlet/Color.h>
#include <kinlet/Geometry.h>
#include <kinlet/MediaFormat.h>
#include <kinlet/MissingAssets.h>
#include <kinlet/PixelAspectRatio.h>
#include <kinlet/RemoteRequests.h>
#include <kinlet/Time.h>
#include <orvcore/text/Guid.h>
#include <orvcore/text/Strings.h>

#include <cstdint>
#include <vector>

namespace kinlet {

/// The luminance of graphics white where a document states none, in candela per square metre (ITU-R BT.2408).
inline constexpr std::uint32_t kDefaultGraphicsWhiteLuminance = 203;

/// What a host says of the composition that a template renders, or of a media file. A plain record: nothing is checked
/// against anything else. Reading is safe from any number of threads; a writer needs it for itself.
struct SourceInfo {
    /// The host project that holds the composition, exactly as the author's machine wrote the path (drive letters and
    /// back-slashes stay on every system). `std::filesystem::path(parentProjectFile)` makes a file object of it.
    orvcore::UTF8String parentProjectFile;
    orvcore::UTF16String name;
    /// The application that produces the media.
    orvcore::UTF16String mediaProducerDescription;
    orvcore::Guid id;

    Time duration;
    PixelAspectRatio pixelAspectRatio;
    AlphaChannelType alphaChannelType{};
    Rect frameSize;
    FrameRate frameRate;
    std::vector<PixelFormat> pixelFormats;
    FieldType fieldType{};
    /// The field order of the media itself, before a user's override.
    FieldType nativeFieldType{};

    std::vector<ChannelLabel> audioChannelLayout;
    /// `ticksPerFrame` is the duration of one sample.
    FrameRate audioSampleRate;
    /// Identity of the content's first state; changes when the content does.
    orvcore::Guid initialContentState;
    bool hasAudio = false;
    bool hasVideo = false;

    Time currentTime;
    Time workInPoint;
    Time workOutPoint;
    /// The colour that the alpha channel is matted with; 0 to 1.
    double alphaMatteColorRed = 0;
    double alphaMatteColorGreen = 0;
    double alphaMatteColorBlue = 0;
    /// The time code of the first frame.
    Time startTime;
    bool isDropFrame = false;
    bool isXMPWritable = false;
    Time inPoint;
    Time outPoint;
    /// Whether this describes a media file rather than a composition.
    bool isMedia = false;
    bool supportsVideoRenderingSessions = false;

    /// Opaque to this library.
    orvcore::UTF8String appSpecificSourceInfo;
    CapsuleParams capsuleParams;
    RemoteAssetRequest assetRequest;
    RemoteProductionRequest productionRequest;

    ColorSpace colorSpace;
    bool hasFrozenUnstretchableRegions = false;
    orvcore::UTF16String teamProjectName;
    /// In candela per square metre.
    std::uint32_t graphicsWhiteLuminance = kDefaultGraphicsWhiteLuminance;
    bool colorAwareEffectsEnabled = false;
    bool enableLogColorManagement = false;

    MissingAssets missingAssets;
    /// In bits a second; 0 when not known.
    std::uint64_t sourceBitrate = 0;
    /// Opaque to this library.
    orvcore::UTF8String contentCredentialsInfo;

    bool operator==(const SourceInfo&) const = default;
};

} // namespace kinlet
