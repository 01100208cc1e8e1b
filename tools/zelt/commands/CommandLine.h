#pragma once

#include <tools/zelt/output/Errors.h>

#include <string>
#include <vector>

namespace zelt {

/// Understands the program's arguments, UTF-8 and without the program's name, and runs the command they name.
ExitCode RunCommandLine(const std::vector<std::string>& arguments);

} // namespace zelt
