#include <stock/StockPreviewDownloadManager.h>

#include <orvappsupport/StockTransfers.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/Paths.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <package/Workspace.h>
#include <stock/StockCapsuleEntry.h>

#include <boost/make_shared.hpp>
#include <boost/pointer_cast.hpp>

#include <mutex>
#include <utility>

// Every view that shows the entry asks for its preview, at any time. `pending_` maps a file to the entry whose
// download is under way, so a second view starts none; its mutex is also held while `onReady` runs, which is why that
// may neither block nor ask for a preview.
//
// The download's handler holds the object, and Terminate flushes the downloads after it has let go of it: when
// Terminate returns no handler runs any more, and the object goes with the last one.

namespace orvcapsule {

namespace {

struct Singleton {
    std::mutex mutex; // guards the pointer; never held while anything is called
    boost::shared_ptr<StockPreviewDownloadManager> instance;
};

Singleton& TheSingleton()
{
    static orvcore::NoDestructor<Singleton> singleton;
    return *singleton;
}

std::mutex& PendingMutex()
{
    static orvcore::NoDestructor<std::mutex> mutex;
    return *mutex;
}

} // namespace

bool StockPreviewDownloadManager::Initialize()
{
    const std::lock_guard lock(TheSingleton().mutex);
    if (!TheSingleton().instance) {
        TheSingleton().instance = boost::make_shared<StockPreviewDownloadManager>();
    }
    return true;
}

boost::shared_ptr<StockPreviewDownloadManager> StockPreviewDownloadManager::GetInstance()
{
    const std::lock_guard lock(TheSingleton().mutex);
    return TheSingleton().instance;
}

void StockPreviewDownloadManager::Terminate()
{
    boost::shared_ptr<StockPreviewDownloadManager> taken;
    {
        const std::lock_guard lock(TheSingleton().mutex);
        taken.swap(TheSingleton().instance);
    }
    orvappsupport::FlushMediaDownloads();
}

void StockPreviewDownloadManager::DownloadPreview(std::shared_ptr<OnReady> onReady,
                                                  const boost::shared_ptr<CapsuleEntry>& entry)
{
    const auto stock = boost::dynamic_pointer_cast<StockCapsuleEntry>(entry);
    if (!stock || !stock->GetVideoPreviewPath().empty()) {
        return;
    }
    const orvcore::UTF8String destination = GetTempStockAssetVideoThumbPath(stock->stockID);
    if (destination.empty()) {
        return;
    }
    if (orvcore::Exists(orvcore::PathFromUTF8(destination))) {
        stock->SetVideoPreviewPath(destination);
        return;
    }
    {
        const std::lock_guard lock(PendingMutex());
        if (!pending_.emplace(orvcore::PathTextToUTF16(destination), entry).second) {
            return;
        }
    }
    try {
        orvcore::KeepModuleLoaded(&TheSingleton());
        orvappsupport::DownloadMediaFromURL(
            stock->videoPreviewURL, destination,
            [self = shared_from_this(), onReady = std::move(onReady)](bool ok, const orvcore::UTF8String& path) {
                self->OnStockPreviewDownloadFinished(ok, path, onReady);
            });
    } catch (...) { // no handler will come, and the preview may be asked for again
        OnStockPreviewDownloadFinished(false, destination, nullptr);
        throw;
    }
}

void StockPreviewDownloadManager::OnStockPreviewDownloadFinished(bool ok, const orvcore::UTF8String& path,
                                                                 const std::shared_ptr<OnReady>& onReady)
{
    const std::lock_guard lock(PendingMutex());
    const auto found = pending_.find(orvcore::PathTextToUTF16(path));
    if (found == pending_.end()) {
        return;
    }
    const auto entry = boost::dynamic_pointer_cast<StockCapsuleEntry>(found->second);
    pending_.erase(found); // also when `onReady` throws
    const orvcore::UTF8String preview = GetTempStockAssetVideoThumbPath(entry->stockID);
    if (ok && orvcore::Exists(orvcore::PathFromUTF8(preview))) {
        entry->SetVideoPreviewPath(preview);
        if (onReady && *onReady) {
            (*onReady)(entry);
        }
    }
}

} // namespace orvcapsule
