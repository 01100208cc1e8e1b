#pragma once

#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string>

namespace orvtest {

/// Runs a program with arguments that hold no quotes, and waits for its end. Both may hold spaces.
/// @return zero when it ended with zero
inline int RunProgram(const char* program, std::initializer_list<std::string> arguments)
{
    std::string line = '"' + std::filesystem::path(program).make_preferred().string() + '"';
    for (const std::string& argument : arguments) {
        line += " \"" + argument + '"';
    }
    // The command processor of Windows takes the first and the last quote off a line with more than two.
    return std::system((std::filesystem::path::preferred_separator == '/' ? line : '"' + line + '"').c_str());
}

} // namespace orvtest
