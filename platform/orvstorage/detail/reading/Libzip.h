#pragma once

#include <orvstorage/detail/ZipResult.h>

#include <zip.h>

#include <memory>

namespace orvstorage::detail {

/// Drops the handle without writing anything.
struct DiscardArchive {
    void operator()(zip_t* archive) const noexcept
    {
        zip_discard(archive);
    }
};
using ArchiveHandle = std::unique_ptr<zip_t, DiscardArchive>;

struct CloseEntry {
    void operator()(zip_file_t* entry) const noexcept
    {
        zip_fclose(entry);
    }
};
using EntryHandle = std::unique_ptr<zip_file_t, CloseEntry>;

/// The zip library's callback for a source of our own: `Source` answers by `Call`, takes failures by `Fail`, and is
/// deleted when the library lets go of it.
template <class Source>
zip_int64_t CallSource(void* source, void* data, zip_uint64_t length, zip_source_cmd_t command)
{
    auto* self = static_cast<Source*>(source);
    if (command == ZIP_SOURCE_FREE) {
        delete self;
        return 0;
    }
    try {
        return self->Call(data, length, command);
    } catch (...) { // memory ran out; nothing may pass through the library's frames
        return self->Fail(ZIP_ER_MEMORY, {});
    }
}

/// The zip library's words about a failure, in ours.
ZipFault FaultOf(zip_error_t& error);

} // namespace orvstorage::detail
