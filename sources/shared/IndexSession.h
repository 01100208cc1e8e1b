#pragma once

#include <orvcore/text/Strings.h>

#include <cstdint>
#include <vector>

namespace orvcapsule::detail {

/// The time between two closings of the process's search index. Work that may outlast its own changes the index
/// through the session in which it began: when the index has been closed meanwhile, calls do nothing, so that the index
/// another opened since is not touched. Thread-safe; as the functions of SearchIndex.h, nothing throws.
class IndexSession {
public:
    /// The session of this moment.
    IndexSession();

    /// As orvcapsule::InsertRow.
    void InsertRow(const orvcore::UTF8String& path, const orvcore::UTF8String& text) const;
    /// As ClearRapidFindDB.
    void Clear(const std::vector<orvcore::UTF8String>& paths) const;

private:
    std::uint64_t number_;
};

} // namespace orvcapsule::detail
