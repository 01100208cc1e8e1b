#pragma once

#include <capsule/Capsule.h>
#include <package/DefinitionFile.h>
#include <sources/CapsuleEntry.h>

#include <orvcore/files/Files.h>

#include <boost/shared_ptr.hpp>

#include <memory>
#include <vector>

namespace orvcapsule {

/// There are no cloud libraries, or none holds what was asked for.
inline constexpr orvcore::ResultCode kResultNothingFound = static_cast<orvcore::ResultCode>(0xA00F0001U);

/// Finds a template in the user's cloud libraries by the display names of its library and of its element, compared byte
/// for byte. The first that fits counts; several libraries may have one name, and all of them are searched. May be
/// called from any thread.
/// @param outPath  receives the path of the package
/// @param outJson  receives the definition text, empty where there is no definition file
/// @return kResultOK, or kResultNothingFound, which leaves both alone
[[nodiscard]] ORVCAPSULE_API orvcore::ResultCode GetCapsuleJson(const orvcore::UTF8String& libraryName,
                                                                const orvcore::UTF8String& elementName,
                                                                orvcore::UTF8String& outPath,
                                                                orvcore::UTF8String& outJson);

/// The definition text of a template with some values of the top level replaced by those of a record. Nothing is
/// written; `CapsuleZip::SetZELTDescriptionJSON` stores a text. All else in the text keeps its bytes: other members,
/// known or not, the digits of their numbers, the order of keys and white space. Of members with one key the last is
/// replaced, which is the one that counts; `orvcore::serialization::JSONSplice` says where a new one goes. May be
/// called from any thread.
///
/// @param entry  tells where the definition is: in the package (entries of the local source), in the element's
///        definition file (of the cloud libraries), and for every other, or null, in `fallbackJson`
/// @param capsule  the values; null: there are none
/// @param keys  what is replaced or added, in this order: "capsuleNameLocalized" (the localised name), "capsuleTags",
///        and "licenseID", whose value is the record's capsule id. Other keys have no value and are passed over.
/// @return the text; empty when no definition text could be had
/// @throws orvcore::serialization::json_parse_exception  when the definition is not JSON, or the new text would be
///         larger than readers take; std::bad_any_cast (a `std::bad_cast`) when it is not an object; what `CapsuleZip`
///         throws
ORVCAPSULE_API orvcore::UTF8String UpdateCapsuleValuesInPlace(const boost::shared_ptr<CapsuleEntry>& entry,
                                                              const std::shared_ptr<Capsule>& capsule,
                                                              const std::vector<const char*>& keys,
                                                              const orvcore::UTF8String& fallbackJson);

} // namespace orvcapsule
