#include <sources/SourceNames.h>

// Hosts store these texts in their own settings and documents, and entries carry them: they never change. As static
// objects with constructors they must not be used while another library's static objects are made,
// nor when the process has ended its tasks and destroys its own.

namespace orvcapsule {

const std::string kLocalSourceID = "graphicsource.local";
const std::string kDefaultLocalSourceID = "graphicsource.local.default";
const std::string kLumoLibrariesSourceID = "graphicsource.LumoLibraries";
const std::string kStockSourceID = "graphicsource.Stock";
const std::string kAnySourceID = "graphicsource.any";
const std::string kNoneSourceID = "graphicsource.none";

const orvcore::UTF16String kAllLibraries = u"LumoLibraries.AllLibraries";

const orvcore::UTF8String kStockFilterAll = u8"all";
const orvcore::UTF8String kStockFilterPremium = u8"true";
const orvcore::UTF8String kStockFilterFree = u8"false";

} // namespace orvcapsule
