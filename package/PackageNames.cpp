#include <package/PackageNames.h>

// Names of the file format: packages of every release hold them, so a changed text makes all stored packages
// unreadable. They are static objects with constructors, so another static object must not use them in its own
// constructor.

namespace orvcapsule {

const orvcore::UTF8String kCapsuleExtn = u8".zelt";
const orvcore::UTF8String kJSONFileName = u8"definition.json";
const orvcore::UTF8String kThumbFileName = u8"thumb.png";
const orvcore::UTF8String kVideoThumbFileName = u8"thumb.mp4";
const orvcore::UTF8String kTsProjectFileName = u8"project.tsgraphic";
const orvcore::UTF8String kCvProjectFileName = u8"project.cvgraphic";

} // namespace orvcapsule
