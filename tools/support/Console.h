#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// What programs do with the streams and the console that the system gives them. Both belong to the process: no library
/// calls any of this.
namespace orvtools {

/// A stream that the system gives every program.
enum class StandardStream : std::uint8_t { Output, Error };

/// True when a person reads the stream on a terminal, false when it goes to a file or another program.
bool IsTerminal(StandardStream stream) noexcept;

/// Makes the stream pass bytes as they are written: on Windows line feeds are otherwise turned into pairs of carriage
/// return and line feed. Call it before the first write.
void SetBinary(StandardStream stream) noexcept;

/// Makes the console show the UTF-8 text that this program writes, until the program ends; the console's own code page
/// is restored then. Does nothing where there is no console, and nothing outside Windows.
void SetConsoleUTF8();

/// How many columns the stream's terminal has; 0 where it is none or does not tell.
std::size_t TerminalWidth(StandardStream stream) noexcept;

/// True when the stream goes to a terminal that shows the colours of escape sequences; on Windows the console is asked
/// to.
bool TakesColour(StandardStream stream) noexcept;

/// Writes whole lines to the stream, past the C library's buffer, so that they stay whole where programs that run side
/// by side share it. A file and a terminal take all that is given as one. A pipe takes as one what is no longer than
/// its limit (PIPE_BUF, 4,096 bytes on Linux): lines are put together up to that, and a longer line is kept whole among
/// the programs that write through this function, each of which waits until another one's lines are in.
/// @param lines  ends with a line feed, or is the last that the program writes
/// @return false when not all could be written
bool WriteLines(StandardStream stream, std::string_view lines) noexcept;

} // namespace orvtools
