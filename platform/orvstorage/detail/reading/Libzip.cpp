#include <orvstorage/detail/reading/Libzip.h>

namespace orvstorage::detail {

namespace {

// Of the library's some thirty errors those that mean something to a caller; the others read as ReadFailed, with the
// library's own words. Some are our own sources' words: ZIP_ER_OPEN for a file to pack that cannot be opened,
// ZIP_ER_CHANGED for an archive that another program has put there meanwhile.
ZipError ErrorOf(int code)
{
    switch (code) {
    case ZIP_ER_MULTIDISK:
        return ZipError::SeveralDisks;
    case ZIP_ER_CRC:
        return ZipError::ChecksumMismatch;
    case ZIP_ER_NOENT:
        return ZipError::EntryMissing;
    case ZIP_ER_EXISTS:
        return ZipError::EntryExists;
    case ZIP_ER_OPEN:
        return ZipError::SourceMissing;
    case ZIP_ER_ZLIB:
    case ZIP_ER_COMPRESSED_DATA:
        return ZipError::DataCorrupt;
    case ZIP_ER_MEMORY:
        return ZipError::OutOfMemory;
    case ZIP_ER_COMPNOTSUPP:
        return ZipError::CompressionUnsupported;
    case ZIP_ER_EOF:
        return ZipError::Truncated;
    case ZIP_ER_NOZIP:
        return ZipError::NotAZip;
    case ZIP_ER_INCONS:
        return ZipError::Inconsistent;
    case ZIP_ER_ENCRNOTSUPP:
        return ZipError::EncryptionUnsupported;
    case ZIP_ER_NOPASSWD:
        return ZipError::PasswordNeeded;
    case ZIP_ER_WRONGPASSWD:
        return ZipError::WrongPassword;
    case ZIP_ER_CANCELLED:
        return ZipError::Cancelled;
    case ZIP_ER_CHANGED:
        return ZipError::ArchiveChanged;
    case ZIP_ER_RENAME:
    case ZIP_ER_CLOSE:
    case ZIP_ER_WRITE:
    case ZIP_ER_TMPOPEN:
        return ZipError::WriteFailed;
    default: // the library's own values, of any version; ours are all named above
        return ZipError::ReadFailed;
    }
}

} // namespace

ZipFault FaultOf(zip_error_t& error)
{
    ZipFault fault{ErrorOf(zip_error_code_zip(&error))};
    // The library's sources keep an errno beside the error, ours too (Source::Fail): there the system's own words are.
    if (zip_error_system_type(&error) == ZIP_ET_SYS && zip_error_code_system(&error) != 0) {
        const std::error_code reason(zip_error_code_system(&error), std::generic_category());
        if (fault.error == ZipError::WriteFailed) {
            return WriteFault(reason);
        }
        fault.detail = reason.message();
    } else if (fault.error == ZipError::ReadFailed) {
        fault.detail = zip_error_strerror(&error);
    }
    return fault;
}

} // namespace orvstorage::detail
