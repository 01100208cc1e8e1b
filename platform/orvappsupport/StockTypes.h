#pragma once

#include <orvcore/text/Strings.h>

#include <cstdint>

namespace orvappsupport {

/// What kind of template is asked for. The numbers are the service's; any other number may be cast to this type and is
/// sent as it is.
enum class TemplateType : std::int32_t {
    Any = 0,
    CompositionProject = 1, ///< projects of the compositing host
    EditingProject = 2,     ///< projects of the editing host
    MotionGraphics = 7,     ///< template packages (".zelt")
};

/// A category of the service's, by its number; which numbers there are is the service's to say.
enum class TemplateCategory : std::int32_t {};

/// What a host knows of the right to use a stock asset.
struct StockAssetLicenseInfo {
    enum class State : std::int32_t {
        Unknown,     ///< not asked yet, or nobody answered
        NotLicensed, ///< the user may look at previews only
        Licensed,    ///< the user may use the asset
    };

    State state = State::Unknown;
    orvcore::UTF8String licenseID;   ///< the service's name for the licence; empty without one
    orvcore::UTF8String purchaseURL; ///< where the user can buy a licence; empty when there is nothing to buy
};

} // namespace orvappsupport
