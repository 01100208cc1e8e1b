#pragma once

#include <capsule/Capsule.h>
#include <capsule/ControlKinds.h>
#include <capsule/ForeignValue.h>

#include <orvcore/json/JSON.h>

#include <memory>
#include <vector>

/// The JSON forms of a template and its parts. Thread-safe on distinct objects. Lists of more than 512 elements
/// convert on all workers of the CPU-bound executor, in order.
///
/// Writers raise `foreign_value_exception` (a `std::bad_variant_access` that names the control) for a control whose
/// value is not of its kind's alternative; `std::bad_cast` for a control whose class does not match a kind that has
/// settings of its own; and `orvcore::serialization::json_write_exception`, which names the key, for a number that is
/// not finite and for kept unknown keys that are not JSON or would be nested too deep to be read.
///
/// Readers raise `orvcore::serialization::missing_key_exception`, which names the innermost key, for a required key
/// that is absent and for a key that holds no usable value (null, another type, a number out of range). Three places
/// are exempt, where readers ignore an unusable value: the top level, a control's "id" and "uiName", and a text
/// control's optional parts as a whole. Readers of value trees also raise `json_write_exception` for a tree that holds
/// a value of a type that trees do not have, or is nested too deep.
namespace orvcapsule::serialization {

/// The definition document of a template: compact UTF-8 JSON of the current format version, keys in ascending byte
/// order. A null pointer gives an empty text.
/// @throws see above; `json_write_exception` also for a text larger than readers take (`kMaxJSONSize`,
///         `kMaxJSONValues`).
ORVCAPSULE_API UTF8String CapsuleToJson(const std::shared_ptr<Capsule>& capsule);

/// Reads a definition document.
///
/// @return an empty pointer when the document is refused: it names no "apiVersion" anywhere in its text, or one newer
///         than this library's. A text that is no JSON object, or beyond the limits of `JSONParse`, gives an empty
///         record. Keys of the top level that hold a value of the wrong type are ignored. A record whose
///         `GetAPIVersion` is empty comes from a definition that is not to be used: it is empty, or its "apiVersion" is
///         no text.
/// @throws missing_key_exception  for a composition or a control with a required key that is absent, or a key that
///         holds no usable value.
ORVCAPSULE_API std::shared_ptr<Capsule> CapsuleFromJson(const UTF8String& json);

/// @name Value trees of single records
/// @{
ORVCAPSULE_API orvcore::serialization::Variant ClientControlToJson(const std::shared_ptr<ClientControl>& control);
/// @return an empty pointer for a value that is no object or names no known kind.
ORVCAPSULE_API std::shared_ptr<ClientControl> ClientControlFromJson(const orvcore::serialization::Variant& value);
/// A localised text: {"strDB": [{"localeString": ..., "str": ...}, ...]}.
ORVCAPSULE_API orvcore::serialization::Variant UIStringToAny(const UIString& text);
ORVCAPSULE_API orvcore::serialization::Variant SourceInfoToJson(const kinlet::SourceInfo& sourceInfo);
/// @throws missing_key_exception  also when `value` is no object.
ORVCAPSULE_API kinlet::SourceInfo SourceInfoFromJson(const orvcore::serialization::Variant& value);
/// @}

/// @name JSON texts of single records
/// Wide (UTF-16) JSON text in both directions. A text that is not JSON, or not of the record's kind, reads as a
/// default-built record or an empty list.
/// @{
ORVCAPSULE_API UTF16String AlternateRectInfoToJson(const AlternateRectInfo& info);
ORVCAPSULE_API AlternateRectInfo AlternateRectInfoFromJson(const UTF16String& json);
ORVCAPSULE_API UTF16String TextEditInfoToJson(const kinlet::TextEditInfo& info);
ORVCAPSULE_API kinlet::TextEditInfo TextEditInfoFromJson(const UTF16String& json);
ORVCAPSULE_API UTF16String SourceTextFontEditInfoToJson(const kinlet::SourceTextFontEditInfo& info);
ORVCAPSULE_API kinlet::SourceTextFontEditInfo SourceTextFontEditInfoFromJson(const UTF16String& json);
ORVCAPSULE_API UTF16String SpreadsheetColInfoLocVecToJson(const std::vector<SpreadsheetColumnInfoLoc>& columns);
ORVCAPSULE_API std::vector<SpreadsheetColumnInfoLoc> SpreadsheetColInfoLocVecFromJson(const UTF16String& json);
/// @}

} // namespace orvcapsule::serialization
