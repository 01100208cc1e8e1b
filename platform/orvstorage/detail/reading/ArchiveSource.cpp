#include <orvstorage/detail/reading/ArchiveSource.h>

#include <orvcore/files/shared/ConditionalCommit.h>
#include <orvstorage/detail/reading/Libzip.h>

#include <cerrno>
#include <optional>

namespace orvstorage::detail {

namespace {

// What the zip library reads from and writes to: our file layer, which knows long paths, shared files and the swap at
// the end. One object a handle; the library frees it.
//
// The library sees one source that is both the old archive and the new: until it closes the handle it only reads; then
// it sends BEGIN_WRITE, and writes the new archive while it still reads from the old one what it copies; COMMIT_WRITE
// ends this, or ROLLBACK_WRITE. Nothing may be changed in the old file meanwhile, so what is written goes to a new one,
// and the two have positions of their own.
class Source {
public:
    /// @param placing of what is written in the end; empty: the source is only read
    Source(std::shared_ptr<const ArchiveFile> file, std::optional<Placing> placing)
        : file_(std::move(file))
        , placing_(std::move(placing))
    {
        zip_error_init(&error_);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    ~Source()
    {
        zip_error_fini(&error_);
    }

    zip_int64_t Call(void* data, zip_uint64_t length, zip_source_cmd_t command);
    zip_int64_t Fail(int zipError, const std::error_code& reason);

private:
    zip_int64_t Supports() const;
    zip_int64_t Stat(void* data, zip_uint64_t length);
    zip_int64_t Read(void* data, zip_uint64_t length);
    zip_int64_t Write(const void* data, zip_uint64_t length);
    zip_int64_t SeekWrite(void* data, zip_uint64_t length);
    zip_int64_t Commit();

    std::shared_ptr<const ArchiveFile> file_; // null: there is no archive yet
    std::optional<Placing> placing_;
    std::optional<orvcore::AtomicFile> writer_;
    // Each handle has a source of its own, so handles of several threads share the file but no position.
    std::uint64_t position_ = 0;
    zip_error_t error_{};
};

zip_int64_t Source::Supports() const
{
    // With WRITABLE the library would write into a source at its closing; a reader's handle never has one to write to.
    constexpr zip_int64_t kRead = ZIP_SOURCE_SUPPORTS_SEEKABLE;
    constexpr zip_int64_t kWrite = ZIP_SOURCE_SUPPORTS_WRITABLE;
    return placing_ ? kWrite : kRead;
}

zip_int64_t Source::Fail(int zipError, const std::error_code& reason)
{
    // The library keeps two numbers and no text. Errors of our own categories have no errno, and become an input/output
    // error.
    const std::error_condition condition = reason.default_error_condition();
    const bool isErrno = condition.category() == std::generic_category();
    zip_error_set(&error_, zipError, isErrno ? condition.value() : EIO);
    return -1;
}

zip_int64_t Source::Stat(void* data, zip_uint64_t length)
{
    auto* stat = ZIP_SOURCE_GET_ARGS(zip_stat_t, data, length, &error_);
    if (stat == nullptr) {
        return -1;
    }
    if (!file_) {
        zip_error_set(&error_, ZIP_ER_READ, ENOENT); // the library's way to learn that there is no archive yet
        return -1;
    }
    zip_stat_init(stat);
    stat->size = file_->Size();
    stat->valid = ZIP_STAT_SIZE;
    return sizeof(*stat);
}

zip_int64_t Source::Read(void* data, zip_uint64_t length)
{
    std::error_code error;
    const std::size_t count = file_->Read(position_, data, length, error);
    if (error) {
        return Fail(ZIP_ER_READ, error);
    }
    position_ += count;
    return static_cast<zip_int64_t>(count);
}

zip_int64_t Source::Write(const void* data, zip_uint64_t length)
{
    std::error_code error;
    if (!writer_->Write(data, length, error)) {
        return Fail(ZIP_ER_WRITE, error);
    }
    if (placing_->written && !placing_->written(length)) {
        return Fail(ZIP_ER_CANCELLED, {});
    }
    return static_cast<zip_int64_t>(length);
}

zip_int64_t Source::SeekWrite(void* data, zip_uint64_t length)
{
    const zip_int64_t offset =
        zip_source_seek_compute_offset(writer_->Position(), writer_->Size(), data, length, &error_);
    if (offset >= 0) {
        writer_->Seek(static_cast<std::uint64_t>(offset));
    }
    return offset < 0 ? -1 : 0;
}

zip_int64_t Source::Commit()
{
    std::error_code error;
    // Outside the lock: the caller's function may take its time, and other programs wait for the lock.
    if (placing_->approve && !placing_->approve()) {
        return Fail(ZIP_ER_CANCELLED, error);
    }
    // Only this question, which is asked under the folder's lock, is safe from another program that changes the
    // archive.
    bool isUnchanged = true;
    const auto isWanted = [&] {
        isUnchanged = placing_->isUnchanged();
        placing_->isUnchanged = {}; // it and this source may hold the old file, and
        file_.reset();              // some systems do not replace a file that is open
        return isUnchanged;
    };
    if (!orvcore::detail::ConditionalCommit::Run(*writer_, isWanted, orvcore::Durability::OnDisk, placing_->placed,
                                                 error)) {
        return isUnchanged ? Fail(ZIP_ER_WRITE, error) : Fail(ZIP_ER_CHANGED, {});
    }
    writer_.reset();
    return 0;
}

zip_int64_t Source::Call(void* data, zip_uint64_t length, zip_source_cmd_t command)
{
    switch (command) {
    // The file stays open from the beginning to the end of the handle; to the library it opens and closes as a file
    // would.
    case ZIP_SOURCE_OPEN:
        position_ = 0;
        return 0;
    case ZIP_SOURCE_READ:
        return Read(data, length);
    case ZIP_SOURCE_CLOSE:
        return 0;
    case ZIP_SOURCE_STAT:
        return Stat(data, length);
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&error_, data, length);
    case ZIP_SOURCE_SEEK: {
        const zip_int64_t offset = zip_source_seek_compute_offset(position_, file_->Size(), data, length, &error_);
        position_ = offset < 0 ? position_ : static_cast<std::uint64_t>(offset);
        return offset < 0 ? -1 : 0;
    }
    case ZIP_SOURCE_TELL:
        return static_cast<zip_int64_t>(position_);
    case ZIP_SOURCE_SUPPORTS:
        return Supports();
    case ZIP_SOURCE_BEGIN_WRITE:
        writer_.emplace(placing_->path);
        // Reading the folder costs little against writing an archive.
        writer_->RemoveLeftBehind();
        return 0;
    case ZIP_SOURCE_WRITE:
        return Write(data, length);
    case ZIP_SOURCE_SEEK_WRITE:
        return SeekWrite(data, length);
    case ZIP_SOURCE_TELL_WRITE:
        return static_cast<zip_int64_t>(writer_->Position());
    case ZIP_SOURCE_COMMIT_WRITE:
        return Commit();
    case ZIP_SOURCE_ROLLBACK_WRITE:
        // The private file goes with the writer.
        writer_.reset();
        return 0;
    default: // commands of other versions of the library
        zip_error_set(&error_, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
}

ZipResult<ArchiveHandle> Open(std::unique_ptr<Source> source, int flags)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* zipSource = zip_source_function_create(CallSource<Source>, source.get(), &error);
    ArchiveHandle handle;
    if (zipSource != nullptr) {
        static_cast<void>(source.release()); // owned by zipSource now
        handle.reset(zip_open_from_source(zipSource, flags, &error));
        if (!handle) {
            // Opening takes the source over only when it succeeds. Our object goes with it, by the FREE command.
            zip_source_free(zipSource);
        }
    }
    ZipResult<ArchiveHandle> result = handle ? ZipResult(std::move(handle)) : FaultOf(error);
    zip_error_fini(&error);
    return result;
}

} // namespace

ZipResult<ArchiveHandle> OpenForReading(const std::shared_ptr<const ArchiveFile>& file)
{
    return Open(std::make_unique<Source>(file, std::nullopt), ZIP_RDONLY);
}

ZipResult<ArchiveHandle> OpenForWriting(std::shared_ptr<const ArchiveFile> old, Placing placing)
{
    const int flags = old ? 0 : ZIP_CREATE;
    return Open(std::make_unique<Source>(std::move(old), std::move(placing)), flags);
}

} // namespace orvstorage::detail
