#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>
#include <sources/CapsuleEntry.h>

#include <boost/shared_ptr.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>

#include <functional>
#include <map>
#include <memory>

namespace orvcapsule {

/// Downloads the preview videos of stock entries into the stock working folder (Workspace.h), each file once however
/// many views ask for it. One object for the process, which the host makes and ends.
class ORVCAPSULE_API StockPreviewDownloadManager : public boost::enable_shared_from_this<StockPreviewDownloadManager> {
public:
    /// Called with the entry on the client's download thread when its preview has arrived; it must neither block nor
    /// call DownloadPreview there. Hand the news to the main thread (`orvcore::AsyncCallFromMainThread`).
    using OnReady = std::function<void(boost::shared_ptr<CapsuleEntry>)>;

    /// Makes the object unless it is there. True in both cases. Any thread, as the next two.
    static bool Initialize();
    /// The object; empty before Initialize and after Terminate.
    static boost::shared_ptr<StockPreviewDownloadManager> GetInstance();
    /// Ends the object and all downloads of the process (`orvappsupport::FlushMediaDownloads`): when this returns, no
    /// `OnReady` runs and none will be called. From within an `OnReady` it does not wait for the others. Must not be
    /// called under the system's loader lock. It may be initialised again.
    static void Terminate();

    /// Gets an entry's preview: afterwards look at the entry's `GetVideoPreviewPath`. Where that has a path, the
    /// preview was there and nothing else happens. Where it is empty a download is under way, and `onReady` is called
    /// when it has succeeded, unless another view asked before: only the first one's is called. A failed download calls
    /// nothing, and may be asked for again.
    /// @param onReady may be empty
    /// @param entry   any but a `StockCapsuleEntry` is passed over
    void DownloadPreview(std::shared_ptr<OnReady> onReady, const boost::shared_ptr<CapsuleEntry>& entry);

private:
    void OnStockPreviewDownloadFinished(bool ok, const orvcore::UTF8String& path,
                                        const std::shared_ptr<OnReady>& onReady);

    std::map<orvcore::UTF16String, boost::shared_ptr<CapsuleEntry>> pending_; ///< by destination
};

} // namespace orvcapsule
