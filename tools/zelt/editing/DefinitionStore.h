#pragma once

#include <tools/zelt/support/Interrupt.h>

#include <string>
#include <string_view>

namespace zelt {

/// Makes sure that an edited definition can be read again. @throws FileError  of `file` otherwise
void NeedReadable(const std::string& file, std::string_view definition);

/// Stores a definition in the package `from` and puts the result in the place of `to`, which may be the same file. No
/// other entry's bytes change; on failure `to` is as it was. @throws FileError, Cancelled
void StoreDefinition(const std::string& from, const std::string& to, std::string_view definition,
                     const InterruptWatch& interrupt);

} // namespace zelt
