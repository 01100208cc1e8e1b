#pragma once

#include <kinlet/MissingAssets.h>
#include <orvcore/json/shared/JSONTable.h>

namespace orvcore::serialization::detail {

template <>
struct JSONTable<kinlet::MissingFont> {
    static constexpr auto fields = Fields(Optional("missAssetPropFontFamily", &kinlet::MissingFont::family),
                                          Optional("missAssetPropFontStyle", &kinlet::MissingFont::style),
                                          Optional("missAssetPropFontPostScript", &kinlet::MissingFont::postScriptName),
                                          Optional("missAssetPropFontFullName", &kinlet::MissingFont::fullName),
                                          Optional("missAssetPropFontType", &kinlet::MissingFont::type));
};

template <>
struct JSONTable<kinlet::MissingPlugin> {
    static constexpr auto fields = Fields(Optional("missAssetPropPluginMatchName", &kinlet::MissingPlugin::matchName));
};

template <>
struct JSONTable<kinlet::MissingFootage> {
    static constexpr auto fields = Fields(Optional("missAssetPropFootagePath", &kinlet::MissingFootage::path));
};

template <>
struct JSONTable<kinlet::MissingAssets> {
    static constexpr auto fields = Fields(Optional("missAssetsPropMissingFonts", &kinlet::MissingAssets::fonts),
                                          Optional("missAssetsPropMissingPlugins", &kinlet::MissingAssets::plugins),
                                          Optional("missAssetsPropMissingFootage", &kinlet::MissingAssets::footage),
                                          Optional("missAssetsOfflineMasks", &kinlet::MissingAssets::offlineMasks));
};

} // namespace orvcore::serialization::detail
