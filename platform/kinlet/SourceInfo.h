#pragma once

#include <kinlet/CapsuleParams.h>
#include <kinlet/Color.h>
#include <kinlet/Units.h>
#include <orvcore/json/JSON.h>
#include <orvcore/text/Guid.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace kinlet {

/// One pixel format that a source can deliver. Both numbers are the host's; this library stores and compares them.
struct PixelFormat {
    /// Four-character code of the layout.
    std::uint64_t fourCC = 0;
    /// Flags that qualify it.
    std::uint64_t properties = 0;

    bool operator==(const PixelFormat&) const = default;
};

/// What one audio channel carries (left, right, centre ...); the number is the host's.
struct ChannelLabel {
    std::uint64_t label = 0;

    bool operator==(const ChannelLabel&) const = default;
};

/// How the alpha channel is to be read. The numbers are the host's and pass through unchanged; 0 is the default.
enum class AlphaChannelType : std::int64_t {};

/// The order of the fields of an interlaced frame. The numbers are the host's and pass through unchanged; 0 is the
/// default.
enum class FieldType : std::int64_t {};

/// How a collaboration server is reached and who asks. All texts are the host's; this library stores them and opens
/// no connection.
struct ServerConnection {
    orvcore::UTF16String serverDiscoveryURL;
    /// Port number as text.
    orvcore::UTF16String earPort;
    orvcore::UTF16String userName;
    orvcore::UTF16String authToken;
    orvcore::UTF16String authTokenType;
    /// Additional request headers, name and value, in order; a name may come more than once.
    std::vector<std::pair<orvcore::UTF16String, orvcore::UTF16String>> headers;

    bool operator==(const ServerConnection&) const = default;
};

/// Names one asset by the production that holds it, that production's revision, and its own identifier.
struct RemoteAssetInfo {
    orvcore::UTF16String productionIdentifier;
    orvcore::UTF16String productionRevision;
    orvcore::UTF16String assetIdentifier;

    bool operator==(const RemoteAssetInfo&) const = default;
};

/// Names one revision of a production.
struct RemoteProductionInfo {
    orvcore::UTF16String productionIdentifier;
    orvcore::UTF16String revision;
    orvcore::UTF16String displayName;

    bool operator==(const RemoteProductionInfo&) const = default;
};

/// A request for one asset of a collaboration server.
struct RemoteAssetRequest {
    ServerConnection serverConnection;
    RemoteAssetInfo assetInfo;

    bool operator==(const RemoteAssetRequest&) const = default;
};

/// A request for a production of a collaboration server.
struct RemoteProductionRequest {
    ServerConnection serverConnection;
    RemoteProductionInfo productionInfo;
    /// Whether the production is to be made when it does not exist.
    bool createNewProduction = false;

    bool operator==(const RemoteProductionRequest&) const = default;
};

/// A font that a composition uses and the author's machine did not have.
struct MissingFont {
    orvcore::UTF16String family;
    orvcore::UTF16String style;
    orvcore::UTF16String postScriptName;
    orvcore::UTF16String fullName;
    /// Kind of the font; the number is the host's.
    std::int64_t type = 0;

    bool operator==(const MissingFont&) const = default;
};

/// An effect plug-in that a composition uses and the author's machine did not have.
struct MissingPlugin {
    orvcore::UTF16String matchName;

    bool operator==(const MissingPlugin&) const = default;
};

/// A footage file that a composition uses and that was not found.
struct MissingFootage {
    /// The path as the author's machine wrote it, with that machine's separators.
    orvcore::UTF8String path;

    bool operator==(const MissingFootage&) const = default;
};

/// What was missing when the composition was last saved.
struct MissingAssets {
    std::vector<MissingFont> fonts;
    std::vector<MissingPlugin> plugins;
    std::vector<MissingFootage> footage;
    /// Which kinds of assets are offline; the bits are the host's.
    std::uint64_t offlineMasks = 0;

    bool operator==(const MissingAssets&) const = default;
};

/// The luminance of graphics white where a document states none, in candela per square metre (ITU-R BT.2408).
inline constexpr std::uint32_t kDefaultGraphicsWhiteLuminance = 203;

/// What a host says of the composition that a template renders, or of a media file. A plain record: values are not
/// checked against each other. Any number of threads may read it at the same time; a writer needs exclusive access.
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
    /// In bits per second; 0 when not known.
    std::uint64_t sourceBitrate = 0;
    /// Opaque to this library.
    orvcore::UTF8String contentCredentialsInfo;

    bool operator==(const SourceInfo&) const = default;
};

/// The record as a JSON object. Every key is written, except in the colour space, which leaves out values that equal
/// the default. Thread-safe.
/// @throws orvcore::serialization::json_write_exception  for a number that is not finite, and for a kept unknown key
///         whose text is not JSON.
ORVPLATFORM_API orvcore::serialization::Variant ToJSON(const SourceInfo& record);

/// Replaces `record` by what a JSON value tree holds. Integers are accepted for doubles and the other way round where
/// no digit is lost. Keys that are not the record's are ignored, or kept by parts with an `unknownKeys` member.
/// @return false, `record` being left as it is, when the tree as a whole is of no usable kind (not an object).
/// @throws orvcore::serialization::missing_key_exception  naming the key, when a required key is absent or a key that
///         is there, required or not, holds no usable value (null, another kind, a number out of range); `record` is
///         then left as it is.
/// @throws orvcore::serialization::json_write_exception  for a tree that holds a value of a type that trees do not
///         have, or is nested too deep.
ORVPLATFORM_API bool FromJSON(const orvcore::serialization::Variant& tree, SourceInfo& record);

} // namespace kinlet
