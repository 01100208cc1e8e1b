#include <orvcore/json/shared/JSONDocument.h>

#include <orvcore/json/detail/JSONDocumentBuilder.h>
#include <orvcore/json/detail/JSONText.h>
#include <orvcore/tasks/shared/NoDestructor.h>

#include <array>
#include <mutex>
#include <new>
#include <vector>

namespace orvcore::serialization {

namespace {

// The parser library keeps its choice of instructions in a static object that it destroys at exit. Choosing when this
// library is loaded makes that object older than the executors' exit handler, which gives running tasks time to end: so
// it outlives them. Made by the first parsing, it would die before the handler runs.
[[maybe_unused]] const bool kHasChosen = !simdjson::get_active_implementation()->name().empty();

} // namespace

struct JSONDocument::Storage {
    simdjson::dom::parser parser{simdjson::SIMDJSON_MAXSIZE_BYTES};
    NodeArena arena;
    JSONNode root;
    std::vector<char> padded;

    simdjson::error_code Parse(std::string_view text)
    {
        // simdjson counts the document itself as one level.
        if (parser.capacity() < text.size() || parser.max_depth() != kMaxJSONDepth + 1) {
            if (const auto error = parser.allocate(text.size(), kMaxJSONDepth + 1); error != simdjson::SUCCESS) {
                return error;
            }
        }
        // The parser reads a little past the end of its text.
        padded.resize(std::max(padded.size(), text.size() + simdjson::SIMDJSON_PADDING));
        std::copy(text.begin(), text.end(), padded.begin());
        return parser.parse(padded.data(), text.size(), false).error();
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
    static NoDestructor<Spares> spares; // a document may outlive every static object
    return *spares;
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

const char* JSONDocument::BeyondLimits(std::string_view json) noexcept
{
    static_assert(kMaxJSONSize == 8U << 20U && kMaxJSONValues == 262144, "the reasons name the limits");
    if (json.size() > kMaxJSONSize) {
        return "The text is larger than 8 MiB.";
    }
    // A value takes two bytes and more, so most texts need no counting.
    if (json.size() > 2 * kMaxJSONValues && detail::CountValues(json) > kMaxJSONValues) {
        return "The text holds more than 262144 values.";
    }
    return nullptr;
}

JSONDocument JSONDocument::Parse(std::u8string_view text)
{
    constexpr std::u8string_view byteOrderMark = u8"\uFEFF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    const std::string_view json = AsNarrow(text);
    if (const char* reason = BeyondLimits(json)) {
        throw json_parse_exception(reason);
    }
    auto storage = Storage::Obtain();
    simdjson::error_code error = storage->Parse(json);
    if (error != simdjson::SUCCESS) {
        // Integers beyond 64 bits make the parser give up; as doubles they are numbers like others.
        if (const std::string again = detail::WithBigIntegersAsDoubles(json); !again.empty()) {
            error = storage->Parse(again);
        }
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
