#pragma once

#include <tools/zelt/editing/LocalizedTexts.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zelt {

/// All localised texts of a template, or those that a translator hands back.
struct TextTable {
    struct Row {
        std::string key;                          ///< see VisitTexts
        std::map<std::string, std::string> texts; ///< by locale; what is missing in one is a gap
    };
    std::vector<Row> rows;

    /// All locales that one of the texts has, in order.
    std::vector<std::string> Locales() const;
};

TextTable ReadTexts(const orvcore::serialization::JSONSplice& document);

/// For people: one text a line, "-" for a gap.
std::string TextsAsTable(const TextTable& table);
/// Lines of fields with commas as RFC 4180 has them, the first with the locales. A gap is an empty field, an empty text
/// one in quotation marks.
std::string TextsAsCSV(const TextTable& table);
/// An object for each text on a line: "key", and "texts" with null for a gap.
std::string TextsAsJSON(const TextTable& table);

/// Reads either of the two back. In the first, fields may also be separated by semicolons or tabulators, as spreadsheet
/// programs of some languages write them. @throws UsageError  that says what is wrong, and in which line
TextTable ParseTexts(std::string_view text);

} // namespace zelt
