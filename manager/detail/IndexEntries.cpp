#include <manager/detail/IndexEntries.h>

#include <manager/detail/TaskEnd.h>

#include <algorithm>
#include <set>

namespace orvcapsule::detail {

namespace {

// Ends before a text for which `stop` is true; false then.
template <class Stop>
bool IndexTexts(const IndexSession& index, const CapsuleEntry& entry, Stop&& stop)
{
    if (stop()) {
        return false;
    }
    index.InsertRow(entry.path, orvcore::ToUTF8(entry.name));
    const std::size_t count = std::min(entry.tags.size(), kMostIndexedTags);
    return std::all_of(entry.tags.begin(), entry.tags.begin() + static_cast<std::ptrdiff_t>(count),
                       [&](const orvcore::UTF16String& tag) {
                           if (stop()) {
                               return false;
                           }
                           index.InsertRow(entry.path, orvcore::ToUTF8(tag));
                           return true;
                       });
}

} // namespace

void IndexEntries(const IndexSession& index, const EntryList& entries, CheckCancel& token)
{
    for (const auto& entry : entries) {
        if (!IndexTexts(index, *entry, [&] { return MustEnd(token); })) {
            return;
        }
    }
}

void ReindexEntries(const IndexSession& index, const EntryList& entries, CheckCancel& token)
{
    std::set<std::u8string_view> begun; // elements of a library may share a package
    for (const auto& entry : entries) {
        if (MustEnd(token)) {
            return;
        }
        if (begun.insert(entry->path).second) {
            // With one path: no path at all would empty the index.
            index.Clear({entry->path});
        }
        // Not interrupted: between the removal and the last insertion the template has only some of its texts.
        IndexTexts(index, *entry, [] { return false; });
    }
}

} // namespace orvcapsule::detail
