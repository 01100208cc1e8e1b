#pragma once

#include <orvstorage/ZipFailure.h>

#include <zip.h>

#include <memory>
#include <system_error>

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

/// Puts the zip library's words about a failure into ours.
void TranslateError(zip_error_t& error, ZipFailure& failure);

/// The same for the file system's, when something was being written.
void TranslateWriteError(const std::error_code& error, ZipFailure& failure);

} // namespace orvstorage::detail
