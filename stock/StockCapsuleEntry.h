#pragma once

#include <capsule/Capsule.h>
#include <sources/CapsuleEntry.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace orvcapsule {

/// One asset of the stock service as a search found it. No package lies on disk: `path` and `thumbnailPath` are empty,
/// so two such entries are equal however different (`operator==`); `stockID` tells them apart.
///
/// Of `CapsuleEntry` it has `name`, `description`, `tags` (the asset's keywords), `frameWidth`, `frameHeight` and
/// `fileSize` (of the package). As with every entry, what the source filled in is only read afterwards. Two things come
/// later, through members that any thread may call: the preview video and the template's description.
class ORVCAPSULE_API StockCapsuleEntry : public CapsuleEntry {
public:
    StockCapsuleEntry();
    StockCapsuleEntry(const StockCapsuleEntry&);
    StockCapsuleEntry& operator=(const StockCapsuleEntry&);
    ~StockCapsuleEntry() override;

    /// The service's identifier of the asset: any text.
    orvcore::UTF8String stockID;
    bool isPremium = false;  ///< the asset costs money
    bool isLicensed = false; ///< the user had a licence when the search was made

    orvcore::UTF16String creatorName;
    /// @name As the service told them
    /// Empty or 0 where it did not. A URL may be anything; what is no URL of http or https is not fetched.
    /// @{
    orvcore::UTF8String metadataURL;       ///< the template's definition document
    orvcore::UTF8String videoPreviewURL;   ///< a video
    orvcore::UTF8String thumbnailURL;      ///< a still
    orvcore::UTF8String smallThumbnailURL; ///< the same, at most 240 pixels wide
    orvcore::UTF8String thumbnailHTMLTag;
    std::uint32_t thumbnailWidth = 0; ///< of `thumbnailURL`, in pixels
    std::uint32_t thumbnailHeight = 0;
    std::vector<orvcore::UTF8String> categories; ///< numbers in decimal
    /// @}

    /// `videoPreviewPath`: the path of the preview video, empty until it is there. While a download is under way that
    /// field itself must not be read.
    orvcore::UTF8String GetVideoPreviewPath() const override;
    void SetVideoPreviewPath(const orvcore::UTF8String& preview);

    /// The template's description, empty until `StockSource::DownloadJSON` has got it. Not to be changed.
    std::shared_ptr<Capsule> GetCapsule() const;
    void SetCapsule(std::shared_ptr<Capsule> capsule);

private:
    std::shared_ptr<Capsule> capsule_;
};

} // namespace orvcapsule
