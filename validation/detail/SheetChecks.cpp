#include <validation/detail/DefinitionChecks.h>

#include <capsule/DefinitionKeys.h>
#include <kinlet/Spreadsheet.h>
#include <orvcore/json/JSONSplice.h>

#include <algorithm>

namespace orvcapsule::detail {

namespace {

using kinlet::SpreadsheetColumnDataType;
using orvcore::serialization::JSONKind;
using orvcore::serialization::ToJSON;

bool IsOfKind(const PlacedValue& cell, SpreadsheetColumnDataType kind)
{
    switch (kind) {
    case SpreadsheetColumnDataType::kText:
        return cell->IsString();
    case SpreadsheetColumnDataType::kNumber:
        return cell->Kind() == JSONKind::kInt64 || cell->Kind() == JSONKind::kUInt64 ||
               cell->Kind() == JSONKind::kDouble;
    case SpreadsheetColumnDataType::kBool:
        return cell->Kind() == JSONKind::kBool;
    case SpreadsheetColumnDataType::kDate:
        return cell->IsObject();
    }
    return true; // kinds without a name hold anything
}

void CheckCell(const PlacedValue& cell, const PlacedValue& column, DefinitionReport& report)
{
    std::uint32_t kind = 0;
    std::uint64_t wide = 0;
    // A null cell is one that the user has not filled in.
    if (!column.Get("columnDataType", wide) || cell->Kind() == JSONKind::kNull) {
        return;
    }
    kind = static_cast<std::uint32_t>(wide);
    if (!IsOfKind(cell, static_cast<SpreadsheetColumnDataType>(kind))) {
        report.At(cell, {Severity::Warning, "CellKind", "a cell is of another kind than its column"});
        return;
    }
    double least = 0;
    double most = 0;
    double number = 0;
    const bool isLimited = kind == static_cast<std::uint32_t>(SpreadsheetColumnDataType::kNumber) &&
                           column.Get("columnMinValue", least) && column.Get("columnMaxValue", most) &&
                           // Both limits 0 mean that there is none: columns without limits are stored so.
                           (least != 0 || most != 0) && cell->Get(number);
    if (isLimited && least <= most && (number < least || number > most)) {
        report.At(cell, {Severity::Warning, "CellOutOfRange", "a cell's number is outside its column's range",
                         "a number from " + ToJSON(least) + " to " + ToJSON(most)});
    }
}

void CheckColumnRange(const PlacedValue& column, DefinitionReport& report)
{
    double least = 0;
    double most = 0;
    if (column.Get("columnMinValue", least) && column.Get("columnMaxValue", most) && least > most) {
        report.At(column.Find("columnMinValue"),
                  {Severity::Warning, "MinAboveMax", "a column's least value is above its greatest, " + ToJSON(most)});
    }
}

// How many rows there are, against what the control allows. A sheet without any cell is one to be filled.
void CheckRows(const PlacedValue& control, const PlacedValue& value, std::uint64_t rows, DefinitionReport& report)
{
    std::uint64_t fewest = 0;
    std::uint64_t most = 0;
    if (!control.Get("minRows", fewest) || !control.Get("maxRows", most)) {
        return;
    }
    if (fewest > most) {
        report.At(control.Find("minRows"),
                  {Severity::Warning, "MinAboveMax",
                   "it has at least " + std::to_string(fewest) + " rows and at most " + std::to_string(most)});
    } else if (rows != 0 && (rows < fewest || rows > most)) {
        report.At(value,
                  {Severity::Warning, "RowsOutOfRange", "it has " + std::to_string(rows) + " rows, outside its limits",
                   std::to_string(fewest) + " to " + std::to_string(most) + " rows"});
    }
}

struct Cells {
    std::uint64_t longest = 0;
    bool isEven = true;
};

Cells CheckColumns(const PlacedValue& columns, const PlacedValue& infos, DefinitionReport& report)
{
    Cells cells;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!columns[i]->IsArray()) {
            continue;
        }
        const std::uint64_t rows = columns[i].size();
        cells.isEven = cells.isEven && (i == 0 || rows == cells.longest);
        cells.longest = std::max(cells.longest, rows);
        for (std::size_t row = 0; i < infos.size() && row < rows; ++row) {
            CheckCell(columns[i][row], infos[i], report);
        }
    }
    return cells;
}

} // namespace

void CheckSheet(const PlacedValue& control, DefinitionReport& report)
{
    const PlacedValue infos = control.Find("columnInfo");
    const PlacedValue value = control.Find(CAPSULE_CONTROL_VALUE_STR);
    const PlacedValue columns = value ? value.Find("columnValues") : PlacedValue();
    if (!infos || !infos->IsArray() || !value) {
        return;
    }
    for (std::size_t i = 0; i < infos.size(); ++i) {
        CheckColumnRange(infos[i], report);
    }
    if (infos.size() == 0) {
        report.At(infos, {Severity::Warning, "UnequalCounts", "it has no columns", "at least one column"});
    }
    const bool hasColumns = columns && columns->IsArray();
    const Cells cells = hasColumns ? CheckColumns(columns, infos, report) : Cells();
    if (hasColumns && columns.size() != 0 && columns.size() != infos.size()) {
        report.At(columns, {Severity::Warning, "UnequalCounts",
                            "it has " + std::to_string(columns.size()) + " columns of cells and describes " +
                                std::to_string(infos.size()),
                            "one list of cells a column"});
    }
    if (!cells.isEven) {
        report.At(columns, {Severity::Warning, "UnequalCounts", "its columns are of unequal length",
                            "as many cells in each column"});
    }
    std::uint64_t active = 0;
    if (value.Get("activeRows", active) && active > cells.longest) {
        report.At(value.Find("activeRows"),
                  {Severity::Warning, "RowsOutOfRange", "more rows are in use than it has cells for",
                   "a number up to " + std::to_string(cells.longest)});
    }
    CheckRows(control, value, cells.longest, report);
}

} // namespace orvcapsule::detail
