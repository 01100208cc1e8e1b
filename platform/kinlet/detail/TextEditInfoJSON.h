#pragma once

#include <kinlet/TextEditInfo.h>
#include <kinlet/shared/ColorJSON.h>

namespace orvcore::serialization::detail {

template <>
struct JSONTable<kinlet::SourceTextFontEditInfo> {
    static constexpr auto fields = Fields(Optional("fontEditable", &kinlet::SourceTextFontEditInfo::fontEditable),
                                          Optional("sizeEditable", &kinlet::SourceTextFontEditInfo::sizeEditable),
                                          Optional("styleEditable", &kinlet::SourceTextFontEditInfo::styleEditable),
                                          Optional("fontName", &kinlet::SourceTextFontEditInfo::fontName),
                                          Optional("fontSize", &kinlet::SourceTextFontEditInfo::fontSize),
                                          Optional("bold", &kinlet::SourceTextFontEditInfo::bold),
                                          Optional("italic", &kinlet::SourceTextFontEditInfo::italic),
                                          Optional("allCaps", &kinlet::SourceTextFontEditInfo::allCaps),
                                          Optional("smallCaps", &kinlet::SourceTextFontEditInfo::smallCaps));
    static constexpr auto unknown = &kinlet::SourceTextFontEditInfo::unknownKeys;
};

template <>
struct JSONTable<kinlet::TextStyleRun> {
    static constexpr auto fields = Fields(
        Optional("length", &kinlet::TextStyleRun::length), Optional("fontName", &kinlet::TextStyleRun::fontName),
        Optional("fontSize", &kinlet::TextStyleRun::fontSize), Optional("fillColor", &kinlet::TextStyleRun::fillColor));
    static constexpr auto unknown = &kinlet::TextStyleRun::unknownKeys;
};

template <>
struct JSONTable<kinlet::TextEditInfo> {
    static constexpr auto fields = Fields(Optional("text", &kinlet::TextEditInfo::text),
                                          Optional("overrideType", &kinlet::TextEditInfo::overrideType),
                                          Optional("fontEditInfo", &kinlet::TextEditInfo::fontEditInfo),
                                          Optional("styleRuns", &kinlet::TextEditInfo::styleRuns));
    static constexpr auto unknown = &kinlet::TextEditInfo::unknownKeys;
};

} // namespace orvcore::serialization::detail
