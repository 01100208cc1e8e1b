#include <orvstorage/detail/packing/ItemSource.h>

#include <orvcore/files/shared/NativeFile.h>
#include <orvstorage/detail/packing/BlockDeflater.h>
#include <orvstorage/detail/reading/Libzip.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <vector>

namespace orvstorage::detail {

namespace {

constexpr std::size_t kPiece = std::size_t{256} << 10;

// A file as the zip library reads it, deflated here on several threads, which the library cannot do. The library is
// told that the content is deflated already. It asks for size and checksum (STAT) twice: before it writes the entry's
// header, when the checksum is not known yet, and after the last byte, when it goes back and completes the header.
//
// The order of its calls is OPEN, READ until that gives 0, CLOSE, all from zip_close and on the thread that called it.
// A failure is told in two steps: -1 from the call, then ERROR asks for the reason.
class ItemSource {
public:
    ItemSource(const PackItem& item, ItemForm form, ByteProgress& progress)
        : item_(item)
        , form_(form)
        , progress_(progress)
    {
        zip_error_init(&error_);
    }
    ItemSource(const ItemSource&) = delete;
    ItemSource& operator=(const ItemSource&) = delete;
    ~ItemSource()
    {
        zip_error_fini(&error_);
    }

    zip_int64_t Call(void* data, zip_uint64_t length, zip_source_cmd_t command)
    {
        switch (command) {
        case ZIP_SOURCE_OPEN:
            return Open();
        case ZIP_SOURCE_READ:
            return Read(static_cast<char*>(data), length);
        case ZIP_SOURCE_CLOSE:
            file_ = {};
            deflater_.reset();
            return 0;
        case ZIP_SOURCE_STAT:
            return Stat(data, length);
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&error_, data, length);
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_READABLE;
        default: // commands of other versions of the library
            return Fail(ZIP_ER_OPNOTSUPP, {});
        }
    }

    zip_int64_t Fail(int zipError, const std::error_code& reason)
    {
        zip_error_set(&error_, zipError, reason.default_error_condition().value());
        return -1;
    }

private:
    zip_int64_t Open()
    {
        using orvcore::detail::NativeFile;
        std::error_code error;
        progress_.current = item_.name;
        file_ = NativeFile::Open(item_.path, NativeFile::Mode::Read, error);
        // All starts again: nothing says that the library opens a source once only.
        position_ = 0;
        finished_ = false;
        crc_ = 0;
        output_.clear();
        used_ = 0;
        if (form_ == ItemForm::Deflated) {
            deflater_.emplace();
        }
        return error ? Fail(ZIP_ER_OPEN, error) : 0;
    }

    zip_int64_t Stat(void* data, zip_uint64_t length)
    {
        auto* stat = ZIP_SOURCE_GET_ARGS(zip_stat_t, data, length, &error_);
        if (stat == nullptr) {
            return -1;
        }
        zip_stat_init(stat);
        stat->size = item_.size;
        stat->valid = ZIP_STAT_SIZE;
        // Of a plain source the library counts the checksum itself as it reads.
        if (form_ == ItemForm::Deflated) {
            stat->comp_method = ZIP_CM_DEFLATE;
            stat->crc = crc_; // asked for again when all has been read
            stat->valid |= ZIP_STAT_COMP_METHOD | ZIP_STAT_CRC;
        }
        return sizeof(*stat);
    }

    zip_int64_t Read(char* data, zip_uint64_t length)
    {
        if (used_ == output_.size() && !Refill()) {
            return -1;
        }
        const std::size_t count = std::min<std::size_t>(length, output_.size() - used_);
        std::copy_n(output_.data() + used_, count, data);
        used_ += count;
        return static_cast<zip_int64_t>(count);
    }

    // Makes the next bytes to hand out; none at the end.
    bool Refill()
    {
        used_ = 0;
        output_.clear();
        if (finished_) {
            return true;
        }
        std::error_code error;
        // The last read asks for one byte more than the file had when it was looked at, which shows whether it has
        // grown.
        const std::uint64_t left = item_.size - position_;
        const std::size_t most = deflater_ ? deflater_->BatchSize() : kPiece;
        piece_.resize(left > most ? most : static_cast<std::size_t>(left) + 1);
        const std::size_t got = file_.ReadAt(position_, piece_.data(), piece_.size(), error);
        position_ += got;
        // A file that changes meanwhile would give an entry that is neither the old nor the new content.
        if (error || position_ > item_.size || (got < piece_.size() && position_ != item_.size)) {
            Fail(ZIP_ER_READ, error ? error : std::make_error_code(std::errc::io_error));
            return false;
        }
        if (!progress_.Advance(got)) {
            Fail(ZIP_ER_CANCELLED, {});
            return false;
        }
        // By the size and not by an empty read, so that the last batch is known as the last when it is deflated.
        finished_ = position_ == item_.size;
        if (deflater_) {
            deflater_->Deflate({piece_.data(), got}, finished_, output_);
            crc_ = deflater_->Crc();
        } else {
            output_.assign(piece_.begin(), piece_.begin() + static_cast<std::ptrdiff_t>(got));
        }
        return true;
    }

    const PackItem& item_;
    const ItemForm form_;
    ByteProgress& progress_;
    orvcore::detail::NativeFile file_;
    std::uint64_t position_ = 0;
    bool finished_ = false; // all of the file has been read
    std::vector<char> piece_;
    std::vector<char> output_;
    std::size_t used_ = 0; // of output_
    std::optional<BlockDeflater> deflater_;
    std::uint32_t crc_ = 0;
    zip_error_t error_{};
};

} // namespace

zip_source_t* MakeItemSource(const PackItem& item, ItemForm form, ByteProgress& progress)
{
    auto source = std::make_unique<ItemSource>(item, form, progress);
    zip_source_t* made = zip_source_function_create(CallSource<ItemSource>, source.get(), nullptr);
    if (made != nullptr) {
        static_cast<void>(source.release()); // owned by `made` now
    }
    return made;
}

} // namespace orvstorage::detail
