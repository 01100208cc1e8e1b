#pragma once

#include <orvcore/Export.h>
#include <orvcore/text/Strings.h>

namespace orvmetadatadb {

/// The form in which a file path is used as a row key: the path itself, code unit for code unit.
///
/// A key names a file, and a key that a search returns is compared with the path it came from. Nothing in a path is
/// therefore read as an escape: "%20", a back-slash, quotes and wildcards are letters of file names. None needs
/// protecting either, since keys and terms reach the database as bound values, never as part of a statement.
/// Thread-safe.
ORVPLATFORM_API orvcore::UTF16String FixEscapeSequences(orvcore::UTF16String path);

} // namespace orvmetadatadb
