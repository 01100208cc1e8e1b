#pragma once

#include <orvcore/Export.h>

#include <string>
#include <vector>

namespace orvcore {

/// The program's arguments as UTF-8, the program's name first: what `main` was given, except on Windows, where those
/// are in the machine's code page and the arguments are taken from the command line that the program was started
/// with. A pattern such as "*.zelt" comes through as it was typed.
ORVPLATFORM_API std::vector<std::string> UTF8Arguments(int argc, const char* const* argv);

/// Makes the console show the UTF-8 text that this program writes, until the program ends; the console's own code page
/// is restored then. Does nothing where there is no console, and nothing outside Windows. For programs, never for a
/// library: the console belongs to the process.
ORVPLATFORM_API void SetConsoleUTF8();

} // namespace orvcore
