#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace zelt {

/// How a command writes a file and tells of it.
struct WriteForm {
    bool json = false;
    bool noClobber = false; ///< a file that is there already is not replaced
};

/// One thing that a program may want to know of a file that was written.
struct WrittenFact {
    std::string_view key;
    std::variant<std::uint64_t, std::string, std::vector<std::string>> value;
};

/// Tells of a file that was written: "FILE: TEXT", or an object with the keys "file" and that of the fact.
void PrintWritten(const WriteForm& form, const std::string& file, const std::string& text, const WrittenFact& fact);

} // namespace zelt
