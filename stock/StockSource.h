#pragma once

#include <orvappsupport/StockSearch.h>
#include <orvappsupport/StockTypes.h>
#include <sources/GraphicSource.h>
#include <sources/SourceNames.h>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace orvcapsule {

using orvappsupport::ClientStockConnection;
using orvappsupport::TemplateCategory;
using orvappsupport::TemplateType;

/// Why a page of a stock search did not arrive.
struct StockSearchFailure {
    orvappsupport::search::Error error = orvappsupport::search::Error::None;
    int first = 0;               ///< position of the page's first result
    orvcore::UTF8String message; ///< plain English, for a log or a tooltip, without a full stop
};

/// The templates of the stock content service (`docs/stock-service.md`). Its entries are `StockCapsuleEntry` objects.
///
/// A source is driven by a stock-mode `GraphicSourceManager`, which asks for page after page, or by a host itself. All
/// operations may be called from any thread. Files go into the stock working folder (Workspace.h).
class ORVCAPSULE_API StockSource : public IGraphicSource {
public:
    using Entries = std::vector<boost::shared_ptr<CapsuleEntry>>;
    /// A page's entries, the position of the first of them, the number of results of the whole query, and the token.
    using OnResults = std::function<void(const Entries&, int first, int total, boost::shared_ptr<CheckCancel>)>;
    /// How many entries a page will have, and the number of results of the whole query.
    using OnArrival = std::function<void(int count, int total)>;
    using OnFailure = std::function<void(const StockSearchFailure&)>;

    /// @param connection may not be empty; shared with other sources as the host likes
    /// @param type what to list
    StockSource(std::shared_ptr<ClientStockConnection> connection, TemplateType type);
    ~StockSource() override;

    std::shared_ptr<ClientStockConnection> GetClientStockConnectionPtr() const;

    /// Prepares the stock working folder, once for the process; for the host's main thread. Throws nothing.
    void Initialize() override;
    /// `kStockSourceID`.
    std::string GetSourceID() const override;
    /// No sub-filters.
    void GetFilter(GraphicFilterID& filter) override;
    /// The path of the entry's JPEG or PNG still in the working folder, which is fetched when it is not there: blocks.
    /// Empty for an entry of another source, when the service gives no such image, or when `cancel` was aborted.
    orvcore::UTF8String GetThumbnailPath(const boost::shared_ptr<CapsuleEntry>& entry,
                                         const boost::shared_ptr<CheckCancel>& cancel) const override;
    /// The same with the reason for an empty path: "DownloadFailed" (no answer, or a refusal), "NotAPicture" (the
    /// answer is none) or, of the working folder, "WriteFailed" and "DiskFull".
    Thumbnail GetThumbnail(const boost::shared_ptr<CapsuleEntry>& entry,
                           const boost::shared_ptr<CheckCancel>& cancel) const;
    /// One of `kStockFilterAll` (the first filter), `kStockFilterPremium` and `kStockFilterFree`, for the searches made
    /// from now on. An empty text changes nothing; any other is sent to the service as it is.
    void SetFilterType(const orvcore::UTF8String& filterType) override;

    /// Gets the template's description of a stock entry and attaches it (`StockCapsuleEntry::GetCapsule`), with the
    /// entry's name and keywords in the place of its own: blocks. It is fetched once for all hosts that share the
    /// working folder. An entry whose description cannot be had, or not be read, stays without.
    virtual void DownloadJSON(const boost::shared_ptr<CapsuleEntry>& entry) const;
    /// Keeps the flag for the host (GetWantThumbsWithStockID); no operation of this class looks at it.
    virtual void SetWantThumbsWithStockID(bool want);
    bool GetWantThumbsWithStockID() const;

    /// Asks the service for one page and returns at once.
    ///
    /// `onResults` is called when the page has arrived, on the client's thread, where it must not block. It is not
    /// called after an error, and not once the token has been aborted, which also ends the transfer. After an error
    /// `onFailure` is called there instead, but not once the token has been aborted, nor when the process's executors
    /// end. `onArrival` is called there before the entries are made and `onResults` is called. A caller that asks for
    /// the next page then gets it sooner, and still `onResults` is called for one page after the other.
    /// @param terms      all of them must match; none: the whole gallery
    /// @param categories results of any of them; none: of all
    /// @param first      position of the first result, from 0
    /// @param count      1 to 100
    /// @param token      may be empty
    /// @param onResults  may be empty, and so may `onFailure` and `onArrival`
    void Search(const std::vector<orvcore::UTF16String>& terms, const std::vector<TemplateCategory>& categories,
                int first, int count, boost::shared_ptr<CheckCancel> token, std::shared_ptr<OnResults> onResults,
                std::shared_ptr<OnFailure> onFailure = nullptr, std::shared_ptr<OnArrival> onArrival = nullptr) const;

private:
    mutable std::mutex mutex_; // guards the filter and the flag
    orvcore::UTF8String filterType_ = kStockFilterAll;
    bool wantThumbsWithStockID_ = false;
    const TemplateType templateType_;
    const std::shared_ptr<ClientStockConnection> connection_;
};

} // namespace orvcapsule
