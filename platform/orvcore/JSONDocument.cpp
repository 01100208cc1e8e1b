#include <orvcore/JSONDocument.h>

#include <simdjson.h>

#include <array>
#include <mutex>
#include <new>
#include <vector>

namespace orvcore::serialization {

namespace {

// simdjson keeps an element count of 24 bits; a container at the limit has to be counted.
constexpr std::size_t kCountLimit = 0xFFFFFF;

template <class Container>
std::size_t CountOf(const Container& container)
{
    const std::size_t count = container.size();
    return count < kCountLimit ? count : static_cast<std::size_t>(std::distance(container.begin(), container.end()));
}

// Node blocks that never move, so that nodes can point at each other.
class NodeArena {
public:
    JSONNode* Allocate(std::size_t count)
    {
        while (current_ < blocks_.size() && blocks_[current_].size - used_ < count) {
            ++current_;
            used_ = 0;
        }
        if (current_ == blocks_.size()) {
            const std::size_t size = std::max(count, nextBlock_);
            nextBlock_ = std::min<std::size_t>(nextBlock_ * 2, 1U << 16U);
            blocks_.push_back({std::make_unique_for_overwrite<JSONNode[]>(size), size});
        }
        JSONNode* result = blocks_[current_].nodes.get() + used_;
        used_ += count;
        std::fill_n(result, count, JSONNode()); // nothing of an earlier document stays
        return result;
    }
    // How many nodes there is room for.
    std::size_t Size() const
    {
        std::size_t size = 0;
        for (const Block& block : blocks_) {
            size += block.size;
        }
        return size;
    }
    // Forgets all nodes and keeps their memory.
    void Reset()
    {
        current_ = 0;
        used_ = 0;
    }

private:
    struct Block {
        std::unique_ptr<JSONNode[]> nodes;
        std::size_t size;
    };
    std::vector<Block> blocks_;
    std::size_t current_ = 0;
    std::size_t used_ = 0;
    std::size_t nextBlock_ = 256;
};

} // namespace

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

class JSONDocumentBuilder {
public:
    explicit JSONDocumentBuilder(NodeArena& arena)
        : arena_(arena)
    {
    }

    void Fill(JSONNode& node, const simdjson::dom::element& element);
    void Fill(JSONNode& node, const Variant& tree, std::size_t depth);

private:
    static void SetText(JSONNode& node, std::string_view text)
    {
        node.kind_ = JSONKind::kString;
        node.value_.text = text.data();
        node.size_ = static_cast<std::uint32_t>(text.size());
    }
    static void SetKey(JSONNode& node, std::string_view key)
    {
        node.key_ = key.data();
        node.keySize_ = static_cast<std::uint32_t>(key.size());
    }
    JSONNode* SetContainer(JSONNode& node, JSONKind kind, std::size_t count)
    {
        JSONNode* children = arena_.Allocate(count);
        node.kind_ = kind;
        node.value_.children = children;
        node.size_ = static_cast<std::uint32_t>(count);
        return children;
    }
    bool FillScalar(JSONNode& node, const Variant& tree);

    NodeArena& arena_;
};

void JSONDocumentBuilder::Fill(JSONNode& node, const simdjson::dom::element& element)
{
    using simdjson::dom::element_type;
    switch (element.type()) {
    case element_type::OBJECT: {
        const simdjson::dom::object object = element.get_object().value_unsafe();
        JSONNode* child = SetContainer(node, JSONKind::kObject, CountOf(object));
        for (const simdjson::dom::key_value_pair member : object) {
            SetKey(*child, member.key);
            Fill(*child++, member.value);
        }
        return;
    }
    case element_type::ARRAY: {
        const simdjson::dom::array array = element.get_array().value_unsafe();
        JSONNode* child = SetContainer(node, JSONKind::kArray, CountOf(array));
        for (const simdjson::dom::element item : array) {
            Fill(*child++, item);
        }
        return;
    }
    case element_type::STRING:
        return SetText(node, element.get_string().value_unsafe());
    case element_type::INT64:
        node.kind_ = JSONKind::kInt64;
        node.value_.int64 = element.get_int64().value_unsafe();
        return;
    case element_type::UINT64:
        node.kind_ = JSONKind::kUInt64;
        node.value_.uint64 = element.get_uint64().value_unsafe();
        return;
    case element_type::DOUBLE:
        node.kind_ = JSONKind::kDouble;
        node.value_.number = element.get_double().value_unsafe();
        return;
    case element_type::BOOL:
        node.kind_ = JSONKind::kBool;
        node.value_.boolean = element.get_bool().value_unsafe();
        return;
    case element_type::NULL_VALUE:
        node.kind_ = JSONKind::kNull;
        return;
    }
}

bool JSONDocumentBuilder::FillScalar(JSONNode& node, const Variant& tree)
{
    if (!tree.has_value()) {
        node.kind_ = JSONKind::kNull;
    } else if (const auto* text = std::any_cast<UTF8String>(&tree)) {
        SetText(node, AsNarrow(*text));
    } else if (const auto* int64 = std::any_cast<std::int64_t>(&tree)) {
        node.kind_ = JSONKind::kInt64;
        node.value_.int64 = *int64;
    } else if (const auto* uint64 = std::any_cast<std::uint64_t>(&tree)) {
        node.kind_ = JSONKind::kUInt64;
        node.value_.uint64 = *uint64;
    } else if (const auto* number = std::any_cast<double>(&tree)) {
        node.kind_ = JSONKind::kDouble;
        node.value_.number = *number;
    } else if (const auto* boolean = std::any_cast<bool>(&tree)) {
        node.kind_ = JSONKind::kBool;
        node.value_.boolean = *boolean;
    } else {
        return false;
    }
    return true;
}

void JSONDocumentBuilder::Fill(JSONNode& node, const Variant& tree, std::size_t depth)
{
    if (depth > kMaxJSONDepth) {
        throw json_write_exception("the value tree is nested too deep");
    }
    const Variant nothing;
    if (const Object* object = AsObject(tree)) {
        JSONNode* child = SetContainer(node, JSONKind::kObject, object->size());
        for (const auto& [key, value] : *object) {
            SetKey(*child, AsNarrow(key));
            Fill(*child++, value ? *value : nothing, depth + 1);
        }
    } else if (const Array* array = AsArray(tree)) {
        JSONNode* child = SetContainer(node, JSONKind::kArray, array->size());
        for (const VariantPtr& value : *array) {
            Fill(*child++, value ? *value : nothing, depth + 1);
        }
    } else if (!FillScalar(node, tree)) {
        throw json_write_exception(std::string("a value tree holds a value of a foreign type: ") + tree.type().name());
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
    simdjson::dom::element root;
    if (error == simdjson::SUCCESS) {
        error = storage->parser.parse(storage->CopyPadded(AsNarrow(text)), text.size(), false).get(root);
    }
    if (error == simdjson::MEMALLOC) {
        throw std::bad_alloc();
    }
    if (error != simdjson::SUCCESS) {
        throw json_parse_exception(simdjson::error_message(error));
    }
    JSONDocumentBuilder(storage->arena).Fill(storage->root, root);
    return JSONDocument(std::move(storage));
}

JSONDocument JSONDocument::FromTree(const Variant& tree)
{
    auto storage = Storage::Obtain();
    JSONDocumentBuilder(storage->arena).Fill(storage->root, tree, 0);
    return JSONDocument(std::move(storage));
}

const JSONNode& JSONDocument::Root() const noexcept
{
    return storage_->root;
}

} // namespace orvcore::serialization
