#pragma once

/// The key names of the definition document, for hosts that read a document by themselves.
namespace orvcapsule {

/// @name Top level
/// @{
inline constexpr char CAPSULE_API_VERSION_STR[] = "apiVersion";
inline constexpr char CAPSULE_APP_STR[] = "authorApp";
inline constexpr char CAPSULE_AUTHORID_STR[] = "authorID";
inline constexpr char CAPSULE_CAPID_STR[] = "capsuleID";
inline constexpr char CAPSULE_CAPNAME_STR[] = "capsuleName";
inline constexpr char CAPSULE_LOCCAPNAME_STR[] = "capsuleNameLocalized";
inline constexpr char CAPSULE_CAPDESC_STR[] = "description";
inline constexpr char CAPSULE_CONTROL_PLATFORMSUPPORT_STR[] = "platformSupport";
inline constexpr char CAPSULE_SOURCE_INFO_STR[] = "sourceInfo"; ///< older single-locale form, read only
inline constexpr char CAPSULE_SOURCE_INFO_LOC_STR[] = "sourceInfoLocalized";
inline constexpr char CAPSULE_CONTROLS_STR[] = "clientControls";
inline constexpr char CAPSULE_USED_FONTS_LOC_STR[] = "usedFontsLocalized";
inline constexpr char CAPSULE_USED_FONTS_STR[] = "usedFonts"; ///< older single-locale form, read only
inline constexpr char CAPSULE_USED_EFFECTS_STR[] = "usedEffects";
inline constexpr char CAPSULE_USED_COMP_RENDERERS_STR[] = "usedCompRenderers";
inline constexpr char CAPSULE_USED_FILE_TYPES_STR[] = "usedFileTypes";
inline constexpr char CAPSULE_TAGS_STR[] = "capsuleTags";
inline constexpr char CAPSULE_TSLIB_COMPLIANT_VERSION_STR[] = "tslibCompliantVersion";
inline constexpr char CAPSULE_MOBILECOMPATIBILITY_VERSION_STR[] = "mobileCompatibilityVersion";
inline constexpr char CAPSULE_INTERNALEFFFECTSONLY_VERSION_STR[] = "internalEffectsOnlyVersion";
inline constexpr char CAPSULE_FONTWELLONLY_VERSION_STR[] = "fontwellOnlyVersion";
inline constexpr char CAPSULE_RESPONSIVEDESIGN_VERSION_STR[] = "responsiveDesignVersion";
inline constexpr char CAPSULE_LICENSEID_STR[] = "licenseID";
/// @}

/// @name Localised text
/// @{
inline constexpr char CAPSULE_STRDB_STR[] = "strDB";
inline constexpr char CAPSULE_STR_STR[] = "str";
inline constexpr char CAPSULE_LOCALE_STR[] = "localeString";
/// @}

/// @name Client controls: keys that every control has
/// @{
inline constexpr char CAPSULE_CONTROL_TYPE_STR[] = "type";
inline constexpr char CAPSULE_CONTROL_ID_STR[] = "id";
inline constexpr char CAPSULE_CONTROL_UINAME_STR[] = "uiName";
inline constexpr char CAPSULE_CONTROLPROPS_CANANIMATE_STR[] = "canAnimate";
inline constexpr char CAPSULE_CONTROL_HIDDEN_STR[] = "hidden";
inline constexpr char CAPSULE_CONTROL_VALUE_STR[] = "value";
/// @}

/// @name Client controls: keys of single kinds
/// @{
inline constexpr char CAPSULE_SLIDERVALUE_MIN_STR[] = "min";
inline constexpr char CAPSULE_SLIDERVALUE_MAX_STR[] = "max";
inline constexpr char CAPSULE_POINT2D_X_STR[] = "x";
inline constexpr char CAPSULE_POINT2D_Y_STR[] = "y";
inline constexpr char CAPSULE_STRING_FONTEDITINFO_STR[] = "fonteditinfo";
inline constexpr char CAPSULE_STRING_ALTERNATERECTINFO_STR[] = "alternateRectInfo";
inline constexpr char CAPSULE_SCALE_LINKED_STR[] = "linked";
inline constexpr char CAPSULE_SCALE_DIMENSIONS_STR[] = "dimensions";
inline constexpr char CAPSULE_GROUP_EXPANDED_STR[] = "groupexpanded";
inline constexpr char CAPSULE_MENU_CONTENT_STR[] = "menucontent";
inline constexpr char CAPSULE_MEDIA_CACHE_VALUE_STR[] = "cacheID";
inline constexpr char CAPSULE_ISEXPANDED_STR[] = "isExpanded";
/// @}

} // namespace orvcapsule
