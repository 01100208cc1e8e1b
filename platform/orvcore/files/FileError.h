#pragma once

#include <orvcore/Export.h>

#include <system_error>

namespace orvcore {

/// Failures of the file layer for which no system has an error code.
enum class FileError {
    EmptyPath = 1,   ///< a path of no characters names no file
    NotARegularFile, ///< a device, a pipe or a socket, which no file may replace
    LinkToNothing,   ///< a link whose file is not there, and which no file may replace
    OutsideTarget,   ///< a link that was there before leads out of the folder that is written to
};

ORVPLATFORM_API std::error_code make_error_code(FileError error) noexcept;

} // namespace orvcore

template <>
struct std::is_error_code_enum<orvcore::FileError> : std::true_type {
};
