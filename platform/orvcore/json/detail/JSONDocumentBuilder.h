#pragma once

#include <orvcore/json/shared/JSONDocument.h>

#include <simdjson.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace orvcore::serialization {

// Node blocks that never move, so that nodes can point at each other. What is allocated holds what an earlier document
// left there.
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
        JSONNode* children = arena_.Allocate(count);
        Set(node, key, kind, {.children = children}, count);
        return children;
    }
    bool FillScalar(JSONNode& node, std::string_view key, const Variant& tree);

    NodeArena& arena_;
};

} // namespace orvcore::serialization
