#pragma once

#include <orvappsupport/StockTypes.h>
#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

#include <functional>
#include <memory>

namespace orvcapsule {

/// @file
/// Three process-wide slots in which one part of a host registers how stock assets are acquired, for other parts and
/// for users of the library. The library keeps the functions and never calls them; what they do, on which thread they
/// may be called, and what their arguments mean beyond the names here is the host's to say.
///
/// A slot is empty until it is set. Setting replaces what was there; an empty pointer empties the slot. The slots take
/// no lock: set them during start-up, before other threads ask for them.

using orvappsupport::StockAssetLicenseInfo;

/// Told whether the work succeeded.
using StockAssetCompletion = std::function<void(bool ok)>;

/// Downloads a stock asset: its identifier, a second text, a flag, and the completion.
using DownloadStockAssetFxn = std::function<void(const orvcore::UTF8String& assetID, const orvcore::UTF8String&, bool,
                                                 const std::shared_ptr<StockAssetCompletion>&)>;
ORVCAPSULE_API void SetDownloadStockAssetSharedFxn(std::shared_ptr<DownloadStockAssetFxn> function);
ORVCAPSULE_API std::shared_ptr<DownloadStockAssetFxn> GetDownloadStockAssetSharedFxn();

/// Fills in what is known of the right to use an asset.
using GetStockAssetLicenseInfoFxn = std::function<void(const orvcore::UTF8String& assetID, StockAssetLicenseInfo&)>;
ORVCAPSULE_API void SetGetStockAssetLicenseInfoSharedFxn(std::shared_ptr<GetStockAssetLicenseInfoFxn> function);
ORVCAPSULE_API std::shared_ptr<GetStockAssetLicenseInfoFxn> GetGetStockAssetLicenseInfoSharedFxn();

/// Licenses an asset through the Zarn service.
using ZarnLicenseStockAssetFxn =
    std::function<void(const orvcore::UTF8String& assetID, const std::shared_ptr<StockAssetCompletion>&)>;
ORVCAPSULE_API void SetZarnLicenseStockAssetSharedFxn(std::shared_ptr<ZarnLicenseStockAssetFxn> function);
ORVCAPSULE_API std::shared_ptr<ZarnLicenseStockAssetFxn> GetZarnLicenseStockAssetSharedFxn();

} // namespace orvcapsule
