#pragma once

#include <orvcore/text/Strings.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace orvstorage {

/// Why an operation on an archive failed, or an entry was refused. Each cause has a value of its own.
enum class ZipError : std::uint8_t {
    None,
    // The archive
    FileMissing,
    CannotOpen,
    NotAZip,
    Truncated,
    Inconsistent,
    Zip64FieldMissing,
    SeveralDisks,
    TooManyEntries,
    DirectoryTooLarge,
    // An entry's content
    EntryMissing,
    EntryTooLarge,
    TotalTooLarge,
    RatioTooHigh,
    TooDeep,
    DataOutsideArchive,
    OverlappingEntries,
    PasswordNeeded,
    WrongPassword,
    EncryptionUnsupported,
    CompressionUnsupported,
    DataCorrupt,
    ChecksumMismatch,
    SizeMismatch,
    HeaderMismatch,
    ReadFailed,
    // An entry's name
    EmptyName,
    BadEncoding,
    ControlCharacter,
    AbsoluteName,
    DriveLetter,
    ParentComponent,
    ReservedCharacter,
    ReservedName,
    TrailingDotOrSpace,
    NameTooLong,
    DuplicateName,
    NameClash,
    SymbolicLink,
    SpecialFile,
    OutsideTarget,
    // Writing
    EntryExists,
    ArchiveChanged,
    SourceMissing,
    NothingToPack,
    WriteFailed,
    DiskFull,
    Cancelled,
    OutOfMemory,
};

/// What was being done when it failed.
enum class ZipAction : std::uint8_t { Open, Read, Unpack, Add, Remove, Pack };

/// The cause's name, the same as the enumerator's, for machines: "ChecksumMismatch".
ORVPLATFORM_API std::string_view NameOf(ZipError error) noexcept;

/// One failure, complete enough to tell a person. A plain value.
struct ORVPLATFORM_API ZipFailure {
    ZipError error = ZipError::None;
    ZipAction action = ZipAction::Open;
    std::filesystem::path archive;
    orvcore::UTF8String entry;         ///< the entry concerned; empty when it is the archive as a whole
    std::string detail;                ///< the system's own words, when it has any
    std::filesystem::path folder = {}; ///< the folder to unpack to, when that as a whole cannot be written

    explicit operator bool() const noexcept
    {
        return error != ZipError::None;
    }
    /// One line of UTF-8 English: what was tried, on which archive and entry, and what was wrong. Of names it shows
    /// what orvcore::Printable leaves of them. Empty without a failure.
    std::string Message() const;
    /// The same without the archive, for callers that name it themselves: `cannot read "thumb.png": ...`, or only what
    /// was wrong where the archive as a whole is concerned.
    std::string Reason() const;
};

/// The failure of an operation that could not write something, with the file system's `error`.
ORVPLATFORM_API ZipFailure WriteFailure(const std::error_code& error, ZipAction action,
                                        const std::filesystem::path& archive, std::u8string_view entry);

} // namespace orvstorage
