#pragma once

#include <kinlet/Spreadsheet.h>
#include <orvcore/json/shared/JSONTable.h>

namespace orvcore::serialization::detail {

// null, text, number, true/false; a date is the object {"date": "YYYY-MM-DD"}, which no text can be mistaken for.
template <>
struct Codec<kinlet::SpreadsheetCell> {
    static bool Read(const JSONNode& node, kinlet::SpreadsheetCell& out);
    static void Write(JSONSink& sink, const kinlet::SpreadsheetCell& value);
};

template <>
struct JSONTable<kinlet::SpreadsheetColumnInfo> {
    static constexpr auto fields = Fields(Required("columnDataType", &kinlet::SpreadsheetColumnInfo::dataType),
                                          Required("columnName", &kinlet::SpreadsheetColumnInfo::name),
                                          Required("columnMinValue", &kinlet::SpreadsheetColumnInfo::minValue),
                                          Required("columnMaxValue", &kinlet::SpreadsheetColumnInfo::maxValue));
};

template <>
struct JSONTable<kinlet::SpreadsheetData> {
    static constexpr auto fields = Fields(Optional("activeRows", &kinlet::SpreadsheetData::activeRows),
                                          Optional("columnValues", &kinlet::SpreadsheetData::columnValues));
    static constexpr auto unknown = &kinlet::SpreadsheetData::unknownKeys;
};

} // namespace orvcore::serialization::detail
