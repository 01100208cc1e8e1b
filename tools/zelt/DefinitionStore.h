#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace zelt {

/// Makes sure that an edited definition can be read again. @throws FileError  of `file` otherwise
void NeedReadable(const std::string& file, std::string_view definition);

/// Stores a definition in the package `from` and puts the result in the place of `to`, which may be the same file. No
/// other entry's bytes change; on failure `to` is as it was. @throws FileError, std::filesystem::filesystem_error
void StoreDefinition(const std::string& from, const std::string& to, std::string_view definition);

} // namespace zelt
