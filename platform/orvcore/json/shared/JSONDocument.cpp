#include <orvcore/json/shared/JSONDocument.h>

#include <orvcore/json/detail/JSONDocumentBuilder.h>

#include <array>
#include <mutex>
#include <new>
#include <vector>

namespace orvcore::serialization {

struct JSONDocument::Storage {
    simdjson::dom::parser parser{simdjson::SIMDJSON_MAXSIZE_BYTES};
    NodeArena arena;
    JSONNode root;
    std::vector<char> padded;

    // The parser reads a little past the end of its text.
    const char* CopyPadded(std::string_view text)
    {
        padded.resize(std::max(padded.size(), text.size() + simdjson::SIMDJSON_PADDING));
        std::copy(text.begin(), text.end(), padded.begin());
        return padded.data();
    }

    static std::unique_ptr<Storage> Obtain();
    static void Recycle(std::unique_ptr<Storage> storage) noexcept;

private:
    struct Spares;
    static Spares& TheSpares();
};

// A listing reads one definition after the other. A few used storages are kept for the next documents: giving their
// large buffers back and taking them anew costs as much as the parsing.
struct JSONDocument::Storage::Spares {
    static constexpr std::size_t kMost = 4;
    static constexpr std::size_t kLargestText = 1U << 20U; // bytes
    static constexpr std::size_t kMostNodes = 1U << 17U;
    std::mutex mutex;
    std::array<std::unique_ptr<Storage>, kMost> storages;
};

JSONDocument::Storage::Spares& JSONDocument::Storage::TheSpares()
{
    // Never destroyed: a document may outlive every static object.
    static Spares& spares = *new Spares;
    return spares;
}

std::unique_ptr<JSONDocument::Storage> JSONDocument::Storage::Obtain()
{
    Spares& spares = TheSpares();
    {
        const std::lock_guard lock(spares.mutex);
        for (std::unique_ptr<Storage>& spare : spares.storages) {
            if (spare) {
                return std::move(spare);
            }
        }
    }
    return std::make_unique<Storage>();
}

void JSONDocument::Storage::Recycle(std::unique_ptr<Storage> storage) noexcept
{
    if (!storage || storage->padded.size() > Spares::kLargestText || storage->arena.Size() > Spares::kMostNodes) {
        return;
    }
    storage->arena.Reset();
    Spares& spares = TheSpares();
    const std::lock_guard lock(spares.mutex);
    for (std::unique_ptr<Storage>& spare : spares.storages) {
        if (!spare) {
            spare = std::move(storage);
            return;
        }
    }
}

JSONDocument::JSONDocument(std::unique_ptr<Storage> storage) noexcept
    : storage_(std::move(storage))
{
}
JSONDocument::JSONDocument(JSONDocument&&) noexcept = default;
JSONDocument& JSONDocument::operator=(JSONDocument&&) noexcept = default;
JSONDocument::~JSONDocument()
{
    Storage::Recycle(std::move(storage_));
}

JSONDocument JSONDocument::Parse(std::u8string_view text)
{
    constexpr std::u8string_view byteOrderMark = u8"\uFEFF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    auto storage = Storage::Obtain();
    // simdjson counts the document itself as one level.
    const bool fits = storage->parser.capacity() >= text.size() && storage->parser.max_depth() == kMaxJSONDepth + 1;
    simdjson::error_code error = fits ? simdjson::SUCCESS : storage->parser.allocate(text.size(), kMaxJSONDepth + 1);
    if (error == simdjson::SUCCESS) {
        error = storage->parser.parse(storage->CopyPadded(AsNarrow(text)), text.size(), false).error();
    }
    if (error == simdjson::MEMALLOC) {
        throw std::bad_alloc();
    }
    if (error != simdjson::SUCCESS) {
        throw json_parse_exception(simdjson::error_message(error));
    }
    JSONDocumentBuilder(storage->arena).Fill(storage->root, storage->parser.doc);
    return JSONDocument(std::move(storage));
}

JSONDocument JSONDocument::FromTree(const Variant& tree)
{
    auto storage = Storage::Obtain();
    JSONDocumentBuilder(storage->arena).Fill(storage->root, {}, tree, 0);
    return JSONDocument(std::move(storage));
}

const JSONNode& JSONDocument::Root() const noexcept
{
    return storage_->root;
}

} // namespace orvcore::serialization
