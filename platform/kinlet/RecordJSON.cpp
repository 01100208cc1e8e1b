#include <kinlet/RecordJSON.h>

#include <kinlet/detail/SourceInfoJSON.h>
#include <kinlet/detail/SpreadsheetJSON.h>

namespace kinlet {

namespace serialization = orvcore::serialization;

template <MediaLinkRecord Record>
serialization::Variant ToJSON(const Record& record)
{
    return serialization::detail::ToTree(record);
}

template <MediaLinkRecord Record>
bool FromJSON(const serialization::Variant& tree, Record& record)
{
    Record result;
    const bool usable = serialization::detail::FromTree(tree, result);
    if (usable) {
        record = std::move(result);
    }
    return usable;
}

// Both functions of one record. NOLINTNEXTLINE(bugprone-macro-parentheses)
#define KINLET_RECORD_JSON(Record)                                                                                     \
    template ORVPLATFORM_API serialization::Variant ToJSON(const Record&);                                             \
    template ORVPLATFORM_API bool FromJSON(const serialization::Variant&, Record&)

KINLET_RECORD_JSON(Time);
KINLET_RECORD_JSON(FrameRate);
KINLET_RECORD_JSON(PixelAspectRatio);
KINLET_RECORD_JSON(Point);
KINLET_RECORD_JSON(PointF);
KINLET_RECORD_JSON(Rect);
KINLET_RECORD_JSON(PixelFormat);
KINLET_RECORD_JSON(ChannelLabel);
KINLET_RECORD_JSON(ColorRGBA);
KINLET_RECORD_JSON(ColorProfile);
KINLET_RECORD_JSON(ColorSpaceMetadata);
KINLET_RECORD_JSON(ColorSpace);
KINLET_RECORD_JSON(ServerConnection);
KINLET_RECORD_JSON(RemoteAssetRequest);
KINLET_RECORD_JSON(RemoteProductionRequest);
KINLET_RECORD_JSON(MissingFont);
KINLET_RECORD_JSON(MissingPlugin);
KINLET_RECORD_JSON(MissingFootage);
KINLET_RECORD_JSON(MissingAssets);
KINLET_RECORD_JSON(CapsuleParams);
KINLET_RECORD_JSON(SourceInfo);
KINLET_RECORD_JSON(SpreadsheetColumnInfo);
KINLET_RECORD_JSON(SpreadsheetCell);
KINLET_RECORD_JSON(SpreadsheetData);
KINLET_RECORD_JSON(SourceTextFontEditInfo);
KINLET_RECORD_JSON(TextEditInfo);

#undef KINLET_RECORD_JSON

} // namespace kinlet
