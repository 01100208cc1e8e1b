#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace orvcore::serialization {
class JSONTextWriter;
}

namespace zelt {

/// Standard output takes bytes as they are and a console shows them as UTF-8. Call it first.
void InitOutput();

/// Writes text to standard output as it is: each line at once to a terminal, else in blocks of whole lines.
void Print(std::string_view text);
/// Writes text and a line feed.
void PrintLine(std::string_view text);
/// Writes a file's bytes as they are, in little memory. @return false when it cannot be read or written
bool PrintFile(const std::filesystem::path& file);
/// Writes what still waits, the beginning of a line too; false when something could not be written since the program
/// began.
bool FlushOutput();

/// `text` in a form that is safe to show: control characters, with which a hostile package could steer a terminal or
/// fake a line, become "?".
std::string Printable(std::string_view text);

/// A text alone on a line: as it is, safe to show, or as a JSON object with the one key.
std::string OneMember(std::string_view key, std::string_view text, bool json);

/// Writes a path as a member, and where it is not well-formed UTF-8 its bytes too, two hexadecimal digits each, under
/// `key` with "Bytes" appended: the text shows such bytes as U+FFFD and names no file.
void WritePath(orvcore::serialization::JSONTextWriter& writer, std::string_view key, std::string_view path);

/// "3 files", "1 file".
std::string Count(std::size_t number, const std::string& noun);

/// @name Paths of the command line, which are UTF-8
/// @{
std::filesystem::path ToPath(std::string_view argument);
/// The full path of what exists, without "." in it. Where it holds "..", links are resolved: only so is that folder the
/// one meant.
/// @throws std::filesystem::filesystem_error
std::filesystem::path ToFullPath(std::string_view argument);
std::string ToText(const std::filesystem::path& path);
/// @}

} // namespace zelt
