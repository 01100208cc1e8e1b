#pragma once

#include <orvcore/text/Strings.h>

#include <filesystem>

namespace orvcore {

/// @name Paths as text
/// A file object is a `std::filesystem::path`; these are the only ways between it and text. Path text is UTF-8 or
/// UTF-16 on every system, never a machine's code page. The round trip of well-formed text is lossless; where a
/// system allows names that are not well-formed, the UTF-8 form keeps the bytes as they are. Thread-safe.
/// @{
ORVPLATFORM_API std::filesystem::path PathFromUTF8(std::u8string_view text);
ORVPLATFORM_API std::filesystem::path PathFromUTF16(std::u16string_view text);
ORVPLATFORM_API UTF8String PathToUTF8(const std::filesystem::path& path);
ORVPLATFORM_API UTF16String PathToUTF16(const std::filesystem::path& path);
/// @}

/// `path` in the form under which the system opens it whatever its length: on Windows a path that nears the
/// system's limit is made absolute and given its `\\?\` form, elsewhere it is returned as it is.
ORVPLATFORM_API std::filesystem::path ToSystemPath(const std::filesystem::path& path);

/// True when `path` can name a file at all: it is not empty and holds no NUL, behind which a system would not look.
ORVPLATFORM_API bool IsUsablePath(const std::filesystem::path& path);

/// A folder's path without separators at its end; a root keeps its own.
ORVPLATFORM_API std::filesystem::path WithoutClosingSeparators(std::filesystem::path folder);

/// The system's folder for temporary files (TMPDIR and its like are honoured). Throws
/// `std::filesystem::filesystem_error` when the system names none that exists.
ORVPLATFORM_API std::filesystem::path TempDirectory();

} // namespace orvcore
