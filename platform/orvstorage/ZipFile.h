#pragma once

#include <orvstorage/ZipEntry.h>
#include <orvstorage/ZipFailure.h>
#include <orvstorage/ZipLimits.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvstorage {

/// The bytes of one entry, shared by reference count; null when there are none to have. An entry of no bytes gives a
/// buffer of length zero.
using ZipBuffer = std::shared_ptr<const std::vector<std::uint8_t>>;

/// Told how much is done, from 0 to 1 and never less than before, and the caller's own pointer. Runs on the thread
/// that called. False cancels.
using ZipProgress = std::function<bool(double fraction, void* opaque)>;

/// One zip archive on disk: reads its entries, and makes or changes it.
///
/// Archives are taken for hostile: see ZipLimits, and ZipError for every ground on which an entry or an archive is
/// refused. No operation throws for what an archive or the file system does; it returns false or null, and
/// GetLastFailure says why.
///
/// The file is opened when first needed and then stays open, so that several entries are read with one opening, until
/// the last copy of the object goes, this object changes the archive, or Reopen. Others may read, replace or delete the
/// file meanwhile. Copies share one open archive, its limits and its last failure. An object and its copies are used by
/// one thread at a time; objects on different archives, or opened apart on the same one, may be used in parallel.
class ORVPLATFORM_API ZipFile {
public:
    /// @param archive the file; it need not exist
    /// @param password opens encrypted entries, and encrypts those that are added (AES-256); empty: none
    explicit ZipFile(const std::filesystem::path& archive, const std::string& password = {});

    /// @name Reading
    /// @{
    /// The entry's bytes, in memory; null when it is missing or refused. Names are exact, case counts. Where an archive
    /// says that it was made on Windows, the back-slashes of its names are read as slashes; a leading "./" of a name is
    /// left out.
    ZipBuffer UnzipItem(std::u8string_view entryName) const;
    /// The same bytes as text, as they are: no decoding.
    /// @param maxSize  refuses a larger entry; holds beside the archive's own limit
    std::optional<orvcore::UTF8String>
    UnzipText(std::u8string_view entryName, std::uint64_t maxSize = std::numeric_limits<std::uint64_t>::max()) const;
    /// Writes the entry's content to the file `destination`, which keeps its own name and appears whole or not at all;
    /// its folder is created when missing, and gone again after a failure. Memory does not depend on the entry's size.
    bool UnzipItems(std::u8string_view entryName, const std::filesystem::path& destination) const;
    /// The same, with progress and cancellation.
    /// @param progress may be empty; told at the start, after each 256 KiB and, with 1.0, before the file
    ///        appears. After its false nothing is left and the failure is `Cancelled`; what it throws is passed on to
    ///        the caller, nothing left either.
    bool UnzipItems(std::u8string_view entryName, const std::filesystem::path& destination, const ZipProgress& progress,
                    void* opaque) const;
    /// Writes the entry's content over the file `destination`, which other programs may have open meanwhile and which
    /// is created when missing; its folder is not. An entry of no bytes counts as missing. All of the entry is read and
    /// checked before the file is touched. After a failure to write the broken file is removed. Memory does not depend
    /// on the entry's size.
    bool UnzipOver(std::u8string_view entryName, const std::filesystem::path& destination) const;
    /// The same, with progress and cancellation.
    /// @param progress may be empty; told at the start, after each 256 KiB that is checked and again written, and 1.0
    ///        in the end. After its false the failure is `Cancelled`, and the file as it was or, once it is being
    ///        written, gone; what it throws is passed on to the caller.
    bool UnzipOver(std::u8string_view entryName, const std::filesystem::path& destination, const ZipProgress& progress,
                   void* opaque) const;
    /// Unpacks everything below `directory`, which is created when missing.
    ///
    /// Entries with a bad name, links, special files and entries that share bytes are refused one by one: they are not
    /// written, all others are, and the result is false with the first refusal as the last failure. Anything else that
    /// fails (damage, a limit, a full disk, a place that cannot be written) fails the whole call, which then leaves
    /// nothing behind: what it had replaced by then is put back.
    /// @param overwrite true: an entry replaces the file that stands in its place; false: that file is kept, and this
    ///        counts as success
    bool UnZip(const std::filesystem::path& directory, bool overwrite) const;
    /// The same, with progress and cancellation.
    /// @param progress as with UnzipItems; told 1.0 when all is unpacked and nothing is in its place yet, after which
    ///        the call can no more be cancelled
    bool UnZip(const std::filesystem::path& directory, bool overwrite, const ZipProgress& progress, void* opaque) const;
    /// The entries in the archive's order; empty when the archive cannot be read.
    std::vector<ZipEntry> GetEntries() const;
    /// True when the archive can be read and has an entry of exactly this name. The last failure stays as it is.
    bool Contains(std::u8string_view entryName) const;
    /// Everything that keeps the archive from being unpacked: its own failure, or one for each refused entry; with
    /// `readContents` each entry's data is read and checked as well, and what a folder has of it. Empty when all is
    /// well. Writes nothing.
    std::vector<ZipFailure> Check(bool readContents) const;
    /// The same with the contents; `tell`, which may be empty, receives the first bytes of each entry that is whole, at
    /// most kEntryHeadSize, with its place in GetEntries.
    std::vector<ZipFailure>
    CheckContents(const std::function<void(std::size_t entry, std::string_view head)>& tell) const;
    /// @}

    /// @name Writing
    /// Each of these makes a new file beside the old one and puts it in place when it is complete on the disk: killed,
    /// cancelled or out of space at any point, the old archive is whole.
    /// @{
    /// Adds the file `entryName` of `directory` under that name; a slash in the name leads into a sub-folder. The
    /// archive is created when missing. Other entries keep their bytes as they are packed.
    ///
    /// The archive must still be the one that this object read, or wrote, last: when another program has changed it
    /// since, or does so meanwhile, the call fails with `ZipError::ArchiveChanged`, now and until Reopen. An archive
    /// that this object has not read is changed as it is found. Where entries are encrypted, the password must open
    /// them.
    /// @param replace whether an entry of that name is replaced; otherwise it makes the call fail
    bool AddItem(std::u8string_view entryName, const std::filesystem::path& directory, bool replace) const;
    /// The same, with progress and cancellation.
    /// @param progress as with Zip
    bool AddItem(std::u8string_view entryName, const std::filesystem::path& directory, bool replace,
                 const ZipProgress& progress, void* opaque) const;
    /// The same with a file of any name: adds `file` under the name `entryName`.
    bool AddFile(std::u8string_view entryName, const std::filesystem::path& file, bool replace,
                 const ZipProgress& progress = {}, void* opaque = nullptr) const;
    /// Removes the entry of exactly this name, otherwise as AddItem. The only entry cannot be removed: an archive has
    /// at least one.
    bool RemoveItem(std::u8string_view entryName) const;
    /// Builds a new archive in its place from all files below `directory`. The same folder gives the same bytes:
    /// entries come in the order of their names, times are the files' own in UTC to two seconds. Pictures, films and
    /// sounds are stored, all else is deflated. The archive itself, when it lies in the folder, is left out. Fails when
    /// the folder holds no file, a link, a special file or a name that could not be unpacked on every system.
    /// @param progress may be empty; called before the archive is replaced, at last with 1.0. What it throws is passed
    ///        on to the caller, nothing changed.
    bool Zip(const std::filesystem::path& directory, const ZipProgress& progress, void* opaque) const;
    /// @}

    /// Forgets what has been read: the next operation opens the archive as it is then, and changes build on that.
    void Reopen() const;

    const std::filesystem::path& GetPath() const noexcept;
    /// Applies to archives opened from now on; an open one is opened again.
    void SetLimits(const ZipLimits& limits);
    ZipLimits GetLimits() const;
    /// Why the last operation failed; no failure when it succeeded.
    ZipFailure GetLastFailure() const;
    /// For a caller that has carried the result of an operation on and failed there.
    void SetLastFailure(const ZipFailure& failure) const;

private:
    struct State;
    template <class Container>
    bool ReadItem(std::u8string_view entryName, std::uint64_t maxSize, Container& content) const;
    std::vector<ZipFailure> Check(bool readContents,
                                  const std::function<void(std::size_t entry, std::string_view head)>& tell) const;
    std::shared_ptr<State> state_;
};

} // namespace orvstorage
