#include <stock/HostHooks.h>

#include <orvcore/tasks/shared/NoDestructor.h>

#include <utility>

namespace orvcapsule {

namespace {

// Never destroyed: a function may come from a part of the host that has been unloaded when the process exits.
template <class Function>
// No lock, as the header says: the three are set while the host starts. The types differ, so each function type has a
// slot of its own.
std::shared_ptr<Function>& Slot()
{
    static orvcore::NoDestructor<std::shared_ptr<Function>> slot;
    return *slot;
}

} // namespace

void SetDownloadStockAssetSharedFxn(std::shared_ptr<DownloadStockAssetFxn> function)
{
    Slot<DownloadStockAssetFxn>() = std::move(function);
}

std::shared_ptr<DownloadStockAssetFxn> GetDownloadStockAssetSharedFxn()
{
    return Slot<DownloadStockAssetFxn>();
}

void SetGetStockAssetLicenseInfoSharedFxn(std::shared_ptr<GetStockAssetLicenseInfoFxn> function)
{
    Slot<GetStockAssetLicenseInfoFxn>() = std::move(function);
}

std::shared_ptr<GetStockAssetLicenseInfoFxn> GetGetStockAssetLicenseInfoSharedFxn()
{
    return Slot<GetStockAssetLicenseInfoFxn>();
}

void SetZarnLicenseStockAssetSharedFxn(std::shared_ptr<ZarnLicenseStockAssetFxn> function)
{
    Slot<ZarnLicenseStockAssetFxn>() = std::move(function);
}

std::shared_ptr<ZarnLicenseStockAssetFxn> GetZarnLicenseStockAssetSharedFxn()
{
    return Slot<ZarnLicenseStockAssetFxn>();
}

} // namespace orvcapsule
