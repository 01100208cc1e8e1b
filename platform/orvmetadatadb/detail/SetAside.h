#pragma once

#include <orvcore/text/Strings.h>

namespace orvmetadatadb::detail {

/// True when the file at `path`, which SQLite could not use, was a search index or holds nothing at all: its header
/// carries the index's mark, or begins as a database and is cut short, or is all zeros. Another program's file is none
/// of these.
bool WasSearchIndex(const orvcore::UTF16String& path);

/// Renames the file, and its log files with it, to the same name with ".damaged" appended, replacing what an earlier
/// call left there. False when the system refuses; nothing is deleted then.
bool SetAside(const orvcore::UTF16String& path);

} // namespace orvmetadatadb::detail
