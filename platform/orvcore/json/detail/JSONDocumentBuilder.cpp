#include <orvcore/json/detail/JSONDocumentBuilder.h>

#include <bit>
#include <cstring>

namespace orvcore::serialization {

// The parser leaves its result on a tape of 64-bit words, in document order: a letter for the kind above 56 bits of
// content, and for numbers a second word. A container's first word holds how many words it ends after and, in the 24
// bits above those 32, how many members it has; a text's, where in the text buffer it stands behind its length.
class JSONDocumentBuilder::Tape {
public:
    explicit Tape(const simdjson::dom::document& document)
        : next_(document.tape.get() + 1) // past the root's own word
        , texts_(document.string_buf.get())
    {
    }

    void ReadInto(JSONDocumentBuilder& builder, JSONNode& node, std::string_view key);

private:
    static constexpr std::uint64_t kContent = (std::uint64_t{1} << 56U) - 1;
    // The field stops at this number: a container with more members would have to be counted by walking it.
    static constexpr std::size_t kMostCounted = 0xFFFFFF;
    static_assert(kMaxJSONValues < kMostCounted, "the tape tells how many members every container has");

    static std::size_t CountOf(std::uint64_t word)
    {
        return word >> 32U & kMostCounted;
    }
    static char KindOf(std::uint64_t word)
    {
        return static_cast<char>(word >> 56U);
    }
    std::string_view TextAt(std::uint64_t word) const
    {
        // Four bytes of length, in the machine's order, then the text. Nodes point at it there: nothing is copied.
        const std::uint8_t* at = texts_ + (word & kContent);
        std::uint32_t length = 0;
        std::memcpy(&length, at, sizeof length);
        return {reinterpret_cast<const char*>(at + sizeof length), length};
    }
    template <class Number>
    Number TakeNumber()
    {
        return std::bit_cast<Number>(*next_++);
    }
    void ReadArray(JSONDocumentBuilder& builder, JSONNode& node, std::string_view key, std::uint64_t word);
    void ReadObject(JSONDocumentBuilder& builder, JSONNode& node, std::string_view key, std::uint64_t word);

    const std::uint64_t* next_;
    const std::uint8_t* texts_;
};

void JSONDocumentBuilder::Tape::ReadArray(JSONDocumentBuilder& builder, JSONNode& node, std::string_view key,
                                          std::uint64_t word)
{
    const std::size_t count = CountOf(word);
    JSONNode* const children = builder.SetContainer(node, key, JSONKind::kArray, count);
    for (std::size_t i = 0; i < count; ++i) {
        ReadInto(builder, children[i], {});
    }
    // Past the closing bracket's own word.
    ++next_;
}

void JSONDocumentBuilder::Tape::ReadObject(JSONDocumentBuilder& builder, JSONNode& node, std::string_view key,
                                           std::uint64_t word)
{
    const std::size_t count = CountOf(word);
    JSONNode* const children = builder.SetContainer(node, key, JSONKind::kObject, count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string_view name = TextAt(*next_++);
        ReadInto(builder, children[i], name);
    }
    ++next_;
}

// The tape is the parser's own work and true to itself, whatever the text was: its words are not checked again.
void JSONDocumentBuilder::Tape::ReadInto(JSONDocumentBuilder& builder, JSONNode& node, std::string_view key)
{
    const std::uint64_t word = *next_++;
    switch (KindOf(word)) {
    case '{':
        return ReadObject(builder, node, key, word);
    case '[':
        return ReadArray(builder, node, key, word);
    case '"':
        return SetText(node, key, TextAt(word));
    case 'l':
        return Set(node, key, JSONKind::kInt64, {.int64 = TakeNumber<std::int64_t>()});
    case 'u':
        return Set(node, key, JSONKind::kUInt64, {.uint64 = TakeNumber<std::uint64_t>()});
    case 'd':
        return Set(node, key, JSONKind::kDouble, {.number = TakeNumber<double>()});
    case 't':
    case 'f':
        return Set(node, key, JSONKind::kBool, {.boolean = KindOf(word) == 't'});
    default:
        return Set(node, key, JSONKind::kNull, {0});
    }
}

void JSONDocumentBuilder::Fill(JSONNode& root, const simdjson::dom::document& document)
{
    Tape(document).ReadInto(*this, root, {}); // recurses as deep as the parser let the text nest: kMaxJSONDepth
}

bool JSONDocumentBuilder::FillScalar(JSONNode& node, std::string_view key, const Variant& tree)
{
    if (!tree.has_value()) {
        Set(node, key, JSONKind::kNull, {0});
    } else if (const auto* text = std::any_cast<UTF8String>(&tree)) {
        SetText(node, key, AsNarrow(*text));
    } else if (const auto* int64 = std::any_cast<std::int64_t>(&tree)) {
        Set(node, key, JSONKind::kInt64, {.int64 = *int64});
    } else if (const auto* uint64 = std::any_cast<std::uint64_t>(&tree)) {
        Set(node, key, JSONKind::kUInt64, {.uint64 = *uint64});
    } else if (const auto* number = std::any_cast<double>(&tree)) {
        Set(node, key, JSONKind::kDouble, {.number = *number});
    } else if (const auto* boolean = std::any_cast<bool>(&tree)) {
        Set(node, key, JSONKind::kBool, {.boolean = *boolean});
    } else {
        return false;
    }
    return true;
}

void JSONDocumentBuilder::Fill(JSONNode& node, std::string_view key, const Variant& tree, std::size_t depth)
{
    if (depth > kMaxJSONDepth) {
        throw json_write_exception("the value tree is nested too deep");
    }
    // A null pointer in a tree is a null value.
    const Variant nothing;
    // Nodes point at the keys and texts of the tree itself: nothing below may take a copy of one.
    if (const Object* object = AsObject(tree)) {
        JSONNode* child = SetContainer(node, key, JSONKind::kObject, object->size());
        for (const auto& [name, value] : *object) {
            Fill(*child++, AsNarrow(name), value ? *value : nothing, depth + 1);
        }
    } else if (const Array* array = AsArray(tree)) {
        JSONNode* child = SetContainer(node, key, JSONKind::kArray, array->size());
        for (const VariantPtr& value : *array) {
            Fill(*child++, {}, value ? *value : nothing, depth + 1);
        }
    } else if (!FillScalar(node, key, tree)) {
        throw json_write_exception(std::string("a value tree holds a value of a foreign type: ") + tree.type().name());
    }
}

} // namespace orvcore::serialization
