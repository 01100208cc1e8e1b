#pragma once

#include <tools/zelt/support/Interrupt.h>
#include <tools/zelt/support/Template.h>

#include <string>
#include <string_view>

namespace zelt {

/// Makes sure that an edited definition can be read again. @throws FileError  of `file` otherwise
void NeedReadable(const std::string& file, std::string_view definition);

/// Stores a definition in the package `from` and puts the result in the place of `to`, which may be the same file. No
/// other entry's bytes change; on failure `to` is as it was.
/// @return false when another program has changed the package since it was read, and nothing was stored
/// @throws FileError, Cancelled
bool StoreDefinition(Template& from, const std::string& to, std::string_view definition,
                     const InterruptWatch& interrupt);

} // namespace zelt
