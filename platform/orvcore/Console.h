#pragma once

#include <orvcore/Export.h>

#include <cstdint>

namespace orvcore {

/// A stream that the system gives every program.
enum class StandardStream : std::uint8_t { Output, Error };

/// True when a person reads the stream on a terminal, false when it goes to a file or another program.
ORVPLATFORM_API bool IsTerminal(StandardStream stream) noexcept;

/// Makes the stream pass bytes as they are written: on Windows line feeds are otherwise turned into pairs of carriage
/// return and line feed. Call it before the first write. For programs, never for a library: streams belong to the
/// process.
ORVPLATFORM_API void SetBinary(StandardStream stream) noexcept;

} // namespace orvcore
