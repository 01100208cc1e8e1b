#pragma once

#include <orvcore/json/JSON.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>

#include <cstdint>
#include <variant>
#include <vector>

namespace kinlet {

/// What the cells of a column hold. Numbers without a name here are kept.
enum class SpreadsheetColumnDataType : std::uint32_t {
    kText = 0,
    kNumber = 1,
    kBool = 2,
    kDate = 3,
};

/// Describes a column. The limits are for columns of numbers; both 0 means none.
struct SpreadsheetColumnInfo {
    SpreadsheetColumnDataType dataType = SpreadsheetColumnDataType::kText;
    orvcore::UTF16String name;
    double minValue = 0;
    double maxValue = 0;

    bool operator==(const SpreadsheetColumnInfo&) const = default;
};

/// One cell: empty, a text, a number, on or off, or a day of the Gregorian calendar (a special date such as "not a
/// date" included). A cell's kind need not be its column's.
using SpreadsheetCell = std::variant<std::monostate, orvcore::UTF16String, double, bool, boost::gregorian::date>;

/// The cells of one column, from the first row down.
using SpreadsheetColumnValues = std::vector<SpreadsheetCell>;

/// The contents of a spreadsheet. Columns may have different lengths, and `activeRows` may differ from all of them.
struct SpreadsheetData {
    /// How many rows, from the first, are in use.
    std::uint64_t activeRows = 0;
    std::vector<SpreadsheetColumnValues> columnValues;
    /// Unknown keys of the document that was read; written again with the record.
    orvcore::serialization::UnknownKeys unknownKeys;

    bool operator==(const SpreadsheetData&) const = default;
};

/// The value of a spreadsheet control.
using SpreadsheetValue = SpreadsheetData;

} // namespace kinlet
