#pragma once

namespace orvcapsule {

/// @name Release stamps
/// The values of a template's version markers: year and month, six digits, or "0" for unsupported. Stored templates and
/// hosts compare these texts. The last one is a January stamp although the others are October stamps; it must not be
/// changed.
/// @{
inline constexpr char CAPSULE_VERSION_UNSUPPORTED[] = "0";
inline constexpr char CAPSULE_VERSION_FALL_2017[] = "201710";
inline constexpr char CAPSULE_VERSION_SPRING_2018[] = "201804";
inline constexpr char CAPSULE_VERSION_FALL_2018[] = "201810";
inline constexpr char CAPSULE_VERSION_SPRING_2019[] = "201904";
inline constexpr char CAPSULE_VERSION_FALL_2019[] = "201910";
inline constexpr char CAPSULE_VERSION_FALL_2020[] = "202010";
inline constexpr char CAPSULE_VERSION_FALL_2021[] = "202110";
inline constexpr char CAPSULE_VERSION_FALL_2022[] = "202210";
inline constexpr char CAPSULE_VERSION_FALL_2023[] = "202310";
inline constexpr char CAPSULE_VERSION_FALL_2024[] = "202410";
inline constexpr char CAPSULE_VERSION_FALL_2025[] = "202601";
/// @}

/// @name Platform identifiers
/// The host applications that a template can name in its platform support and as its author application.
/// @{
inline constexpr char CAPSULE_PLATFORMSUPPORT_TESSEL_STR[] = "tsfx"; ///< the compositing host
inline constexpr char CAPSULE_PLATFORMSUPPORT_CORVID_STR[] = "crvd"; ///< the editing host
inline constexpr char CAPSULE_PLATFORMSUPPORT_BRISK_STR[] = "brsk";  ///< the mobile host
/// @}

} // namespace orvcapsule
