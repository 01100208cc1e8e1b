#pragma once

#include <cstdint>

namespace orvcore {

/// Status of an operation: zero or more is success, a negative value a failure.
using ResultCode = std::int32_t;
inline constexpr ResultCode kResultOK = 0;
/// A file could not be opened for writing.
inline constexpr ResultCode kResultFileNotOpened = static_cast<ResultCode>(0xA00F0005U);
/// A file was opened, but its content could not be written whole.
inline constexpr ResultCode kResultFileNotWritten = static_cast<ResultCode>(0xA00F0006U);

} // namespace orvcore
