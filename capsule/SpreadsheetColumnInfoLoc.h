#pragma once

#include <capsule/UIString.h>

#include <kinlet/Spreadsheet.h>

namespace orvcapsule {

/// A column of a spreadsheet control, with its name in all languages. A plain value.
struct SpreadsheetColumnInfoLoc {
    kinlet::SpreadsheetColumnDataType dataType{};
    UIString name;
    double minimum = 0; ///< smallest value of a numeric column
    double maximum = 0; ///< largest value of a numeric column

    /// The name for the application language, by the rule of `UIString::GetString`.
    UTF16String GetName() const
    {
        return name.GetString();
    }

    /// Limits compare as exact doubles.
    bool operator==(const SpreadsheetColumnInfoLoc&) const = default;
};

} // namespace orvcapsule
