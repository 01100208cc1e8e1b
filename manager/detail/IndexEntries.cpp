#include <manager/detail/IndexEntries.h>

#include <sources/SearchIndex.h>

namespace orvcapsule::detail {

void IndexEntries(const std::vector<boost::shared_ptr<CapsuleEntry>>& entries, CheckCancel& token)
{
    for (const boost::shared_ptr<CapsuleEntry>& entry : entries) {
        if (token.GetAbort()) {
            return;
        }
        InsertRow(entry->path, orvcore::ToUTF8(entry->name));
        for (const orvcore::UTF16String& tag : entry->tags) {
            InsertRow(entry->path, orvcore::ToUTF8(tag));
        }
    }
}

} // namespace orvcapsule::detail
