#include <orvcore/json/shared/JSONDocument.h>

#include <orvcore/json/detail/JSONDocumentBuilder.h>
#include <orvcore/json/detail/JSONText.h>

#include <new>

namespace orvcore::serialization {

namespace {

// The parser library keeps its choice of instructions in a static object that it destroys at exit. Choosing when this
// library is loaded makes that object older than the executors' exit handler, which gives running tasks time to end: so
// it outlives them. Made by the first parsing, it would die before the handler runs.
[[maybe_unused]] const bool kHasChosen = !simdjson::get_active_implementation()->name().empty();

} // namespace

static_assert(kJSONTextRoom >= simdjson::SIMDJSON_PADDING);

struct JSONDocument::Storage {
    simdjson::dom::document parsed; // the texts of the nodes
    NodeArena arena;
    JSONNode root;

    // The parser reads some bytes past the end of its input, and makes a padded copy of a text that may not have them.
    // What it leaves, the tape and the texts, lies in `parsed`; the text itself may go.
    simdjson::error_code Parse(std::string_view text, std::size_t room)
    {
        // The parser's index of the text is larger than the text itself: it goes before the record is read.
        simdjson::dom::parser parser{simdjson::SIMDJSON_MAXSIZE_BYTES};
        // simdjson counts the document itself as one level.
        if (const auto error = parser.allocate(text.size(), kMaxJSONDepth + 1); error != simdjson::SUCCESS) {
            return error;
        }
        return parser.parse_into_document(parsed, text.data(), text.size(), room < kJSONTextRoom).error();
    }
};

JSONDocument::JSONDocument(std::unique_ptr<Storage> storage) noexcept
    : storage_(std::move(storage))
{
}
JSONDocument::JSONDocument(JSONDocument&&) noexcept = default;
JSONDocument& JSONDocument::operator=(JSONDocument&&) noexcept = default;
JSONDocument::~JSONDocument() = default;

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

JSONDocument JSONDocument::Parse(std::u8string_view text, std::size_t room)
{
    constexpr std::u8string_view byteOrderMark = u8"\uFEFF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    const std::string_view json = AsNarrow(text);
    if (const char* reason = BeyondLimits(json)) {
        throw json_parse_exception(reason);
    }
    auto storage = std::make_unique<Storage>();
    simdjson::error_code error = storage->Parse(json, room);
    if (error != simdjson::SUCCESS) {
        // Integers beyond 64 bits make the parser give up; as doubles they are numbers like others. Such texts are
        // rare, so only one that was refused is looked through for them.
        if (const std::string again = detail::WithBigIntegersAsDoubles(json); !again.empty()) {
            error = storage->Parse(again, again.capacity() - again.size());
        }
    }
    // Not the text's fault, and not to be told as one.
    if (error == simdjson::MEMALLOC) {
        throw std::bad_alloc();
    }
    if (error != simdjson::SUCCESS) {
        throw json_parse_exception(simdjson::error_message(error));
    }
    // The nodes point into `parsed` and at each other in `arena`. Both lie behind the pointer that a move hands on, so
    // they never change their place.
    JSONDocumentBuilder(storage->arena).Fill(storage->root, storage->parsed);
    return JSONDocument(std::move(storage));
}

JSONDocument JSONDocument::FromTree(const Variant& tree)
{
    auto storage = std::make_unique<Storage>();
    JSONDocumentBuilder(storage->arena).Fill(storage->root, {}, tree, 0);
    return JSONDocument(std::move(storage));
}

const JSONNode& JSONDocument::Root() const noexcept
{
    return storage_->root;
}

} // namespace orvcore::serialization
