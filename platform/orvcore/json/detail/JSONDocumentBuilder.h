#pragma once

#include <orvcore/json/shared/JSONDocument.h>

#include <simdjson.h>

#include <cstdint>
#include <memory_resource>
#include <type_traits>

namespace orvcore::serialization {

// Where the nodes of a document lie. They never move, so that they can point at each other, and need no destruction.
using NodeArena = std::pmr::monotonic_buffer_resource;

// Writes each node once and whole: with its key, its kind and its value.
class JSONDocumentBuilder {
public:
    explicit JSONDocumentBuilder(NodeArena& arena)
        : arena_(arena)
    {
    }

    void Fill(JSONNode& root, const simdjson::dom::document& document);
    void Fill(JSONNode& node, std::string_view key, const Variant& tree, std::size_t depth);

private:
    class Tape;
    using Value = JSONNode::Value;

    static void Set(JSONNode& node, std::string_view key, JSONKind kind, Value value, std::size_t size = 0)
    {
        node.key_ = key.data();
        node.keySize_ = static_cast<std::uint32_t>(key.size());
        node.kind_ = kind;
        node.value_ = value;
        node.size_ = static_cast<std::uint32_t>(size);
    }
    static void SetText(JSONNode& node, std::string_view key, std::string_view text)
    {
        Set(node, key, JSONKind::kString, {.text = text.data()}, text.size());
    }
    JSONNode* SetContainer(JSONNode& node, std::string_view key, JSONKind kind, std::size_t count)
    {
        static_assert(std::is_trivially_destructible_v<JSONNode> && std::is_trivially_copyable_v<JSONNode>);
        JSONNode* children = std::pmr::polymorphic_allocator<JSONNode>(&arena_).allocate(count);
        Set(node, key, kind, {.children = children}, count);
        return children;
    }
    bool FillScalar(JSONNode& node, std::string_view key, const Variant& tree);

    NodeArena& arena_;
};

} // namespace orvcore::serialization
