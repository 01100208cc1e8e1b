#pragma once

#include <kinlet/Color.h>
#include <orvcore/json/JSON.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kinlet {

/// Which part of a template's text the user may replace in the host. Numbers without a name here are kept.
enum class ESourceTextOverrideType : std::int32_t {
    /// Nothing; the text shows as the author wrote it.
    kNone = 0,
    /// The characters; the author's fonts and styles stay.
    kText = 1,
    /// The characters, and the font settings that `SourceTextFontEditInfo` opens for editing.
    kTextAndFont = 2,
};

/// Which font settings of a text the user may edit, and what they are set to.
struct SourceTextFontEditInfo {
    bool fontEditable = false;
    bool sizeEditable = false;
    bool styleEditable = false;

    /// PostScript name; empty for the font that the author chose.
    std::string fontName;
    /// In points; 0 for the size that the author chose.
    double fontSize = 0;
    bool bold = false;
    bool italic = false;
    bool allCaps = false;
    bool smallCaps = false;

    /// Unknown keys of the document that was read; written again with the record.
    orvcore::serialization::UnknownKeys unknownKeys;

    bool operator==(const SourceTextFontEditInfo&) const = default;
};

/// A stretch of text in one style.
struct TextStyleRun {
    /// In UTF-16 code units.
    std::uint32_t length = 0;
    /// PostScript name.
    std::string fontName;
    /// In points.
    double fontSize = 0;
    ColorRGBA fillColor;
    orvcore::serialization::UnknownKeys unknownKeys;

    bool operator==(const TextStyleRun&) const = default;
};

/// A text as it was edited in a host: its characters, what of it may be edited, and its styles.
struct TextEditInfo {
    orvcore::UTF16String text;
    ESourceTextOverrideType overrideType = ESourceTextOverrideType::kNone;
    SourceTextFontEditInfo fontEditInfo;
    /// Styles from the start of the text on; characters past the last run have the last run's style.
    std::vector<TextStyleRun> styleRuns;
    /// Unknown keys of the document that was read; written again with the record.
    orvcore::serialization::UnknownKeys unknownKeys;

    bool operator==(const TextEditInfo&) const = default;
};

} // namespace kinlet
