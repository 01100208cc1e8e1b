#pragma once

#include <orvcore/text/Strings.h>

#include <filesystem>
#include <system_error>

namespace orvcore {

/// @name Paths as text
/// A file object is a `std::filesystem::path`; these are the only ways between it and text. Path text is UTF-8 or
/// UTF-16 on every system, never a machine's code page. The round trip of well-formed text is lossless. Where names are
/// bytes, which need not be well-formed, it is lossless too: the UTF-8 form keeps the bytes as they are, and in the
/// UTF-16 form each byte that belongs to no well-formed sequence is the lone surrogate U+DC00 + byte (U+DC80 to
/// U+DCFF). To show a name to people, convert the UTF-8 form with `ToUTF16`. Thread-safe.
/// @{
ORVPLATFORM_API std::filesystem::path PathFromUTF8(std::u8string_view text);
ORVPLATFORM_API std::filesystem::path PathFromUTF16(std::u16string_view text);
ORVPLATFORM_API UTF8String PathToUTF8(const std::filesystem::path& path);
ORVPLATFORM_API UTF16String PathToUTF16(const std::filesystem::path& path);
/// One text form of a path in the other.
ORVPLATFORM_API UTF16String PathTextToUTF16(std::u8string_view text);
ORVPLATFORM_API UTF8String PathTextToUTF8(std::u16string_view text);
/// @}

/// `path` in the form under which the system opens it whatever its length: on Windows a path that nears the
/// system's limit is made absolute and given its `\\?\` form, elsewhere it is returned as it is.
ORVPLATFORM_API std::filesystem::path ToSystemPath(const std::filesystem::path& path);

/// True when `path` can name a file at all: it is not empty and holds no NUL, behind which a system would not look.
ORVPLATFORM_API bool IsUsablePath(const std::filesystem::path& path);

/// A folder's path without separators at its end; a root keeps its own.
ORVPLATFORM_API std::filesystem::path WithoutClosingSeparators(std::filesystem::path folder);

/// The system's folder for temporary files (TMPDIR and its like are honoured). When the system names none that exists,
/// the first form throws `std::filesystem::filesystem_error`.
ORVPLATFORM_API std::filesystem::path TempDirectory();
ORVPLATFORM_API std::filesystem::path TempDirectory(std::error_code& error);

} // namespace orvcore
