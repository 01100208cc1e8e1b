#pragma once

#include <orvcore/text/Strings.h>

#include <cstdint>
#include <vector>

namespace orvcapsule::detail {

/// A handle on the process's search index that becomes invalid when the index is closed. A task keeps the session in
/// which it began: if the index has been closed meanwhile, its calls do nothing, so a task that runs too long cannot
/// change an index that was opened later. Thread-safe; as the functions of SearchIndex.h, nothing throws.
class IndexSession {
public:
    /// The session of the index that is open now.
    IndexSession();

    /// As orvcapsule::InsertRow.
    void InsertRow(const orvcore::UTF8String& path, const orvcore::UTF8String& text) const;
    /// As ClearRapidFindDB.
    void Clear(const std::vector<orvcore::UTF8String>& paths) const;

private:
    std::uint64_t number_;
};

} // namespace orvcapsule::detail
