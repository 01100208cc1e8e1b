#include <orvstorage/ZipFailure.h>

#include <orvcore/files/FileError.h>
#include <orvcore/files/Paths.h>
#include <orvcore/text/Printable.h>
#include <orvstorage/detail/ZipResult.h>

#include <cerrno>
#include <utility>

// The words of all archive failures, in one place. A sentence stands behind "cannot read <entry> of <archive>: ", so
// its "it" is the entry, or the archive where no entry is named. The name in front of it is for programs (findings
// carry it): a sentence may change between releases, a name may not.

namespace orvstorage {

namespace {

struct ErrorText {
    std::string_view name;
    std::string_view sentence;
};

// A new error without a text is a compiler warning here, hence no default.
constexpr ErrorText TextOf(ZipError error) noexcept
{
    switch (error) {
    case ZipError::None:
        return {"None", ""};
    case ZipError::FileMissing:
        return {"FileMissing", "there is no such file"};
    case ZipError::CannotOpen:
        return {"CannotOpen", "the file cannot be opened"};
    case ZipError::NotAZip:
        return {"NotAZip", "it is not a zip archive"};
    case ZipError::Truncated:
        return {"Truncated", "it is cut short"};
    case ZipError::Inconsistent:
        return {"Inconsistent", "its directory is damaged"};
    case ZipError::Zip64FieldMissing:
        return {"Zip64FieldMissing", "its directory leaves out the zip64 field that an entry needs"};
    case ZipError::SeveralDisks:
        return {"SeveralDisks", "it is one part of an archive split into several files"};
    case ZipError::TooManyEntries:
        return {"TooManyEntries", "it has more entries or folders than allowed"};
    case ZipError::DirectoryTooLarge:
        return {"DirectoryTooLarge", "its directory is larger than allowed"};
    case ZipError::EntryMissing:
        return {"EntryMissing", "the archive has no such entry"};
    case ZipError::EntryTooLarge:
        return {"EntryTooLarge", "it is larger than allowed"};
    case ZipError::TotalTooLarge:
        return {"TotalTooLarge", "its entries together are larger than allowed"};
    case ZipError::RatioTooHigh:
        return {"RatioTooHigh", "it unpacks to more bytes for each packed byte than allowed"};
    case ZipError::TooDeep:
        return {"TooDeep", "it lies in more folders in one another than allowed"};
    case ZipError::DataOutsideArchive:
        return {"DataOutsideArchive", "its data would lie outside the archive"};
    case ZipError::OverlappingEntries:
        return {"OverlappingEntries", "its data overlaps another entry's"};
    case ZipError::PasswordNeeded:
        return {"PasswordNeeded", "it is encrypted and no password was given"};
    case ZipError::WrongPassword:
        return {"WrongPassword", "the password is wrong"};
    case ZipError::EncryptionUnsupported:
        return {"EncryptionUnsupported", "it is encrypted in a way that is not supported"};
    case ZipError::CompressionUnsupported:
        return {"CompressionUnsupported", "it is compressed in a way that is not supported"};
    case ZipError::DataCorrupt:
        return {"DataCorrupt", "its compressed data is damaged"};
    case ZipError::ChecksumMismatch:
        return {"ChecksumMismatch", "its content does not match its checksum"};
    case ZipError::SizeMismatch:
        return {"SizeMismatch", "its content does not have the size it declares"};
    case ZipError::HeaderMismatch:
        return {"HeaderMismatch", "the header at its data says something else than the directory"};
    case ZipError::ReadFailed:
        return {"ReadFailed", "it cannot be read"};
    case ZipError::EmptyName:
        return {"EmptyName", "its name is empty"};
    case ZipError::BadEncoding:
        return {"BadEncoding", "its name is not valid text"};
    case ZipError::ControlCharacter:
        return {"ControlCharacter", "its name holds a control character"};
    case ZipError::AbsoluteName:
        return {"AbsoluteName", "its name is an absolute path"};
    case ZipError::DriveLetter:
        return {"DriveLetter", "its name begins with a drive letter"};
    case ZipError::ParentComponent:
        return {"ParentComponent", "its name leads out of the folder through '..'"};
    case ZipError::ReservedCharacter:
        return {"ReservedCharacter", "its name holds a character that not every system allows"};
    case ZipError::ReservedName:
        return {"ReservedName", "its name is reserved for a device on Windows"};
    case ZipError::TrailingDotOrSpace:
        return {"TrailingDotOrSpace", "a part of its name ends with a dot or a space"};
    case ZipError::NameTooLong:
        return {"NameTooLong", "its name is too long"};
    case ZipError::DuplicateName:
        return {"DuplicateName", "the archive holds several entries of this name"};
    case ZipError::NameClash:
        return {"NameClash", "its name clashes with another entry's where case does not count"};
    case ZipError::SymbolicLink:
        return {"SymbolicLink", "it is a symbolic link"};
    case ZipError::SpecialFile:
        return {"SpecialFile", "it is neither a file nor a folder"};
    case ZipError::OutsideTarget:
        return {"OutsideTarget", "a link in the target folder would lead it elsewhere"};
    case ZipError::EntryExists:
        return {"EntryExists", "the archive has an entry of this name already"};
    case ZipError::ArchiveChanged:
        return {"ArchiveChanged", "another program has changed it since it was read"};
    case ZipError::SourceMissing:
        return {"SourceMissing", "the file to pack cannot be read"};
    case ZipError::NothingToPack:
        return {"NothingToPack", "there would be no file in it"};
    case ZipError::WriteFailed:
        return {"WriteFailed", "it cannot be written"};
    case ZipError::DiskFull:
        return {"DiskFull", "the disk is full"};
    case ZipError::Cancelled:
        return {"Cancelled", "it was cancelled"};
    case ZipError::OutOfMemory:
        return {"OutOfMemory", "memory ran out"};
    }
    return {"Unknown", "of an unknown reason"};
}

constexpr std::string_view VerbOf(ZipAction action) noexcept
{
    switch (action) {
    case ZipAction::Open:
        return "open";
    case ZipAction::Read:
        return "read";
    case ZipAction::Unpack:
        return "unpack";
    case ZipAction::Add:
        return "add";
    case ZipAction::Remove:
        return "remove";
    case ZipAction::Pack:
        return "pack";
    }
    return "use";
}

std::string Quoted(std::u8string_view text)
{
    return '"' + orvcore::Printable(orvcore::AsNarrow(text)) + '"';
}

std::string_view VerbOf(const ZipFailure& failure) noexcept
{
    // It is not an entry that could not be added or removed then.
    const bool changes = failure.action == ZipAction::Add || failure.action == ZipAction::Remove;
    return changes && failure.entry.empty() ? "change" : VerbOf(failure.action);
}

// "The disk is full" is the one failure to write that a user can do something about, so all that come to the same are
// told so. Not every system has a number for a user's quota.
bool IsFull(const std::error_code& error)
{
    // A file at the size limit of its process or file system has no more room either.
    return error == std::errc::no_space_on_device || error == std::errc::file_too_large
#if defined(EDQUOT)
           || (error.category() == std::generic_category() && error.value() == EDQUOT)
#endif
        ;
}

std::string Cause(const ZipFailure& failure)
{
    std::string cause(TextOf(failure.error).sentence);
    // Without it "it cannot be written" would be read of the archive, which the call only reads.
    if (failure.error == ZipError::WriteFailed && !failure.folder.empty()) {
        cause = "the folder " + Quoted(orvcore::PathToUTF8(failure.folder)) + " cannot be written";
    }
    if (!failure.detail.empty()) {
        cause += " (" + failure.detail + ')';
    }
    return cause;
}

} // namespace

std::string_view NameOf(ZipError error) noexcept
{
    return TextOf(error).name;
}

std::string ZipFailure::Message() const
{
    if (error == ZipError::None) {
        return {};
    }
    std::string message = "cannot ";
    message += VerbOf(*this);
    if (!entry.empty()) {
        message += ' ' + Quoted(entry) + (action == ZipAction::Add || action == ZipAction::Pack ? " into" : " of");
    }
    return message + ' ' + Quoted(orvcore::PathToUTF8(archive)) + ": " + Cause(*this);
}

std::string ZipFailure::Reason() const
{
    if (error == ZipError::None || entry.empty()) {
        return Cause(*this);
    }
    return "cannot " + std::string(VerbOf(action)) + ' ' + Quoted(entry) + ": " + Cause(*this);
}

namespace detail {

ZipFault WriteFault(const std::error_code& error)
{
    if (error == orvcore::FileError::OutsideTarget) {
        return {ZipError::OutsideTarget};
    }
    return {IsFull(error) ? ZipError::DiskFull : ZipError::WriteFailed, error.message()};
}

} // namespace detail

ZipFailure WriteFailure(const std::error_code& error, ZipAction action, const std::filesystem::path& archive,
                        std::u8string_view entry)
{
    return detail::WriteFault(error).In({ZipError::None, action, archive, orvcore::UTF8String(entry), {}});
}

} // namespace orvstorage
