#pragma once

#include <tools/zelt/editing/DefinitionEditor.h>
#include <tools/zelt/output/Errors.h>

#include <functional>
#include <optional>
#include <string>

namespace zelt {

/// A change of a package's definition.
struct DefinitionChange {
    std::string file;
    std::string output;                          ///< the package that receives the result; may be `file`
    std::optional<std::string> text;             ///< takes the place of what is stored, which need not be readable
    std::function<bool(DefinitionEditor&)> edit; ///< false when it cannot be made, which it has reported
};

/// Edits a package's definition and stores it; again where another program has changed the package meanwhile. No other
/// entry's bytes change.
/// @return kDone, or kBadUsage when it could not be made
/// @throws FileError, Cancelled
ExitCode ChangeDefinition(const DefinitionChange& change);

} // namespace zelt
