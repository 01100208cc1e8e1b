#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

#include <set>
#include <vector>

namespace orvcapsule {

/// @name Search index
/// Term search and tag suggestions over the templates of local folders and cloud libraries. The index is one for the
/// process: rows that map a template's package path to one of its texts (its display name, each of its tags), kept in a
/// database file that other hosts may use at the same time.
///
/// Every function may be called from any thread, throws nothing and reports nothing: without an index, or with one that
/// fails, a search finds nothing and an insert has no effect. The index is a cache of what a listing of the sources
/// finds.
/// @{

/// Opens or creates the index at `path`, replacing the one in use. Calls still running in that one are interrupted;
/// this call waits at most two seconds for them. A file that is damaged beyond use is kept beside it with ".damaged"
/// appended to its name, and an empty one is created; a file that cannot be used (locked, not writable, not a search
/// index) is left as it is, and the host goes on without search. Meant to run once, before the first search.
ORVCAPSULE_API void InitializeRapidFindDB(const orvcore::UTF16String& path);

/// How the index is.
enum class SearchIndexState {
    None,        ///< none was initialised, or it was terminated
    Open,        ///< searches find what was listed
    ReadOnly,    ///< searches find what the file has and what this process lists; nothing is written
    Locked,      ///< another process kept the file locked when it was opened: searches find nothing
    Damaged,     ///< the file is damaged; what this process lists is found, until the index is opened again
    NotAnIndex,  ///< the file is another program's and is left as it is: searches find nothing
    Unavailable, ///< the file cannot be opened or written for another reason: no such folder, a full disk
};
struct SearchIndexStatus {
    SearchIndexState state = SearchIndexState::None;
    bool wasSetAside = false; ///< a damaged or older file was renamed (".damaged"): what it had needs a new listing
};
/// For a host to show. Takes no longer than a running call of the index.
ORVCAPSULE_API SearchIndexStatus GetSearchIndexStatus();

/// Adds a row: `text` finds the template at `path`. A row that exists is not added again. Does nothing when either is
/// empty.
ORVCAPSULE_API void InsertRow(const orvcore::UTF8String& path, const orvcore::UTF8String& text);

/// Adds to `matches` the path of every template that all `terms` find, each in any of its texts: a term finds a text
/// that contains it, in any script, ignoring case, accents and width. An empty term finds every template; no terms find
/// none. A path comes as `orvcore::PathTextToUTF16` gives it; `PathTextToUTF8` makes the inserted one of it again, one
/// that is not well-formed UTF-8 included.
ORVCAPSULE_API void QueryRapidFindDB(const std::vector<orvcore::UTF16String>& terms,
                                     std::set<orvcore::UTF16String>& matches);

/// Adds to `tags` at most 100 texts, in lower case, that hold a word beginning with `prefix`, the closest first choice:
/// texts that begin with it as a whole, then shorter ones. An empty prefix stands for any beginning.
ORVCAPSULE_API void GetTags(const orvcore::UTF16String& prefix, std::set<orvcore::UTF16String>& tags);

/// Removes the rows of the templates at `paths`, or all rows when `paths` is empty. No search of this process finds
/// them from then on, also when the file cannot be written yet.
ORVCAPSULE_API void ClearRapidFindDB(const std::vector<orvcore::UTF8String>& paths);

/// Closes the index. A search that is running on another thread is interrupted; the file closes when the last call
/// ends. Pending changes are written first, unless another process keeps the file locked for 10 ms.
ORVCAPSULE_API void TerminateRapidFindDB();
/// @}

} // namespace orvcapsule
