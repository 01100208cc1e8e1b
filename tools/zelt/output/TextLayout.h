#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What the commands' texts for people are made of.
namespace zelt {

/// The elements with the separator between them.
std::string Joined(const std::vector<std::string>& list, std::string_view separator = ", ");

/// "  Label         value" and a line feed, made safe to show; nothing when there is no value.
std::string LabelledLine(const std::string& label, std::string_view value);

/// A number with so many decimals.
std::string Fixed(double number, int decimals);

/// Rows in columns as wide as their widest cell on a terminal, each behind `indent`. A column is made no wider than 60:
/// a longer cell pushes the rest of its row to the right. Cells are safe to show already.
std::string Table(const std::vector<std::vector<std::string>>& rows, std::string_view indent);

} // namespace zelt
