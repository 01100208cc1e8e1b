#include <capsule/Capsule.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace orvcapsule {

namespace {

// Each definition-format version with the newest release stamp that it admits; it admits all older stamps too.
// Stamps are texts that hosts store and compare as texts, so a template passes when its stamp is one of the list, not
// when it is a smaller number: "0" stands for unsupported, and a stamp that no release ever had says nothing.
//
// A new version of the format gets a row at the end, in ascending order: what a version admits are the rows up to its
// own.
struct FormatVersion {
    std::string_view apiVersion;
    std::string_view newestStamp; // empty: the version admits none
};

constexpr std::array kFormatVersions = {
    FormatVersion{"0.3", ""},
    FormatVersion{"1.2", CAPSULE_VERSION_FALL_2017},
    FormatVersion{"1.3", CAPSULE_VERSION_SPRING_2018},
    FormatVersion{"1.4", CAPSULE_VERSION_FALL_2018},
    FormatVersion{"1.5", CAPSULE_VERSION_SPRING_2019},
    FormatVersion{"1.6", CAPSULE_VERSION_FALL_2019},
    FormatVersion{"1.7", CAPSULE_VERSION_FALL_2020},
    FormatVersion{"1.8", CAPSULE_VERSION_FALL_2021},
    FormatVersion{"1.9", CAPSULE_VERSION_FALL_2022},
    FormatVersion{"2.0", CAPSULE_VERSION_FALL_2023},
    FormatVersion{"2.1", CAPSULE_VERSION_FALL_2024},
    FormatVersion{"2.2", CAPSULE_VERSION_FALL_2025},
};

} // namespace

bool Capsule::CanUseTSLib(bool* knownVersion) const
{
    const auto version = std::find_if(kFormatVersions.begin(), kFormatVersions.end(),
                                      [&](const FormatVersion& row) { return row.apiVersion == apiVersion_; });
    const bool known = version != kFormatVersions.end();
    if (knownVersion != nullptr) {
        *knownVersion = known;
    }
    // A version without a row is one of a later library, or none: what it needs cannot be known here, so the host is
    // told to upgrade rather than to show something broken.
    if (!known) {
        return false;
    }
    const std::string stamp = orvcore::ToNarrow(tslibCompliantVersion_);
    return std::any_of(kFormatVersions.begin(), version + 1,
                       [&](const FormatVersion& row) { return !row.newestStamp.empty() && row.newestStamp == stamp; });
}

bool Capsule::IsTSLibCompliant() const
{
    return tslibCompliantVersion_ != orvcore::ToUTF16(CAPSULE_VERSION_UNSUPPORTED);
}

// Entries have a member for the answer, which is part of the interface; no effect is unsupported today.
bool HasUnsupportedEffects(const std::vector<std::string>& /*usedEffects*/)
{
    return false;
}

} // namespace orvcapsule
