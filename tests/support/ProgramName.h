#pragma once

#include <filesystem>
#include <string>

namespace orvtest {

/// A program's path for the beginning of a line for std::system. Quoted where that is safe: the command processor of
/// Windows would take off the wrong quotes, and there the path must hold no spaces.
inline std::string ProgramName(const char* program)
{
    const std::string name = std::filesystem::path(program).make_preferred().string();
    return std::filesystem::path::preferred_separator == '/' ? '"' + name + '"' : name;
}

} // namespace orvtest
