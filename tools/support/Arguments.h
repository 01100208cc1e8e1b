#pragma once

#include <string>
#include <vector>

namespace orvtools {

/// The program's arguments as UTF-8, the program's name first: what `main` was given, except on Windows, where those
/// are in the machine's code page and the arguments are taken from the command line that the program was started
/// with. A pattern such as "*.zelt" comes through as it was typed.
std::vector<std::string> UTF8Arguments(int argc, const char* const* argv);

} // namespace orvtools
