#include <orvstorage/detail/ItemSource.h>

#include <orvcore/detail/NativeFile.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace orvstorage::detail {

namespace {

constexpr std::size_t kPiece = std::size_t{256} << 10;

class ItemSource {
public:
    ItemSource(const PackItem& item, PackProgress& progress)
        : item_(item)
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

private:
    zip_int64_t Fail(int zipError, const std::error_code& reason)
    {
        zip_error_set(&error_, zipError, reason.default_error_condition().value());
        return -1;
    }

    zip_int64_t Open()
    {
        using orvcore::detail::NativeFile;
        std::error_code error;
        progress_.current = item_.name;
        file_ = NativeFile::Open(item_.path, NativeFile::Mode::Read, error);
        position_ = 0;
        piece_.clear();
        used_ = 0;
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
        return sizeof(*stat);
    }

    zip_int64_t Read(char* data, zip_uint64_t length)
    {
        if (used_ == piece_.size()) {
            std::error_code error;
            piece_.resize(kPiece);
            piece_.resize(file_.ReadAt(position_, piece_.data(), kPiece, error));
            used_ = 0;
            position_ += piece_.size();
            // A file that changes meanwhile would give an entry that is neither the old nor the new content.
            const bool changed = position_ > item_.size || (piece_.empty() && position_ != item_.size);
            if (error || changed) {
                return Fail(ZIP_ER_READ, error ? error : std::make_error_code(std::errc::io_error));
            }
            if (!progress_.Advance(piece_.size())) {
                return Fail(ZIP_ER_CANCELLED, {});
            }
        }
        const std::size_t count = std::min<std::size_t>(length, piece_.size() - used_);
        std::memcpy(data, piece_.data() + used_, count);
        used_ += count;
        return static_cast<zip_int64_t>(count);
    }

    const PackItem& item_;
    PackProgress& progress_;
    orvcore::detail::NativeFile file_;
    std::uint64_t position_ = 0;
    std::vector<char> piece_;
    std::size_t used_ = 0;
    zip_error_t error_{};
};

zip_int64_t CallItem(void* source, void* data, zip_uint64_t length, zip_source_cmd_t command)
{
    auto* self = static_cast<ItemSource*>(source);
    if (command == ZIP_SOURCE_FREE) {
        delete self;
        return 0;
    }
    try {
        return self->Call(data, length, command);
    } catch (...) { // memory ran out; nothing may pass through the library's frames
        return -1;
    }
}

} // namespace

zip_source_t* MakeItemSource(const PackItem& item, PackProgress& progress)
{
    auto source = std::make_unique<ItemSource>(item, progress);
    zip_source_t* made = zip_source_function_create(CallItem, source.get(), nullptr);
    if (made != nullptr) {
        source.release(); // owned by `made` now
    }
    return made;
}

} // namespace orvstorage::detail
