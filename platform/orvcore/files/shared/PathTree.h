#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvcore::detail {

/// A set of relative paths, each with all the folders above it. A path is held as its last name and the number of its
/// folder, so memory grows with the names entered, not with their depth.
/// @tparam Char of the names
template <class Char>
class PathTree {
public:
    using String = std::basic_string<Char>;
    using View = std::basic_string_view<Char>;
    using Node = std::uint32_t;
    static constexpr Node kRoot = 0; ///< the folder to which all paths are relative

    std::optional<Node> Find(Node folder, View name) const
    {
        const auto found = nodes_.find(KeyOf(folder, name));
        return found == nodes_.end() ? std::nullopt : std::optional(found->second);
    }

    /// What was not there before. Nodes are numbered from 1 on, one after the other.
    Node Add(Node folder, View name)
    {
        const auto added = nodes_.try_emplace(KeyOf(folder, name), static_cast<Node>(nodes_.size() + 1)).first;
        keys_.push_back(&added->first);
        return added->second;
    }

    /// The names from the root on; empty for the root itself.
    String PathOf(Node node, Char separator) const
    {
        if (node == kRoot) {
            return {};
        }
        const String& key = *keys_[node - 1];
        String path = PathOf(FolderOf(key), separator);
        if (!path.empty()) {
            path += separator;
        }
        return path.append(key, kNumberSize);
    }

private:
    static constexpr std::size_t kNumberSize = sizeof(Node); // a number takes that many characters, a byte in each

    // One table for all levels: the folder's number in front of the name makes the key, so that no folder has a table
    // of its own. A byte in each character, whatever its width: all of them fit.
    static String KeyOf(Node folder, View name)
    {
        String key;
        key.reserve(kNumberSize + name.size());
        for (std::size_t i = 0; i < kNumberSize; ++i) {
            key += static_cast<Char>(folder >> (8 * i) & 0xff);
        }
        return key += name;
    }

    static Node FolderOf(const String& key)
    {
        Node folder = 0;
        for (std::size_t i = 0; i < kNumberSize; ++i) {
            folder |= static_cast<Node>(static_cast<unsigned char>(key[i])) << (8 * i);
        }
        return folder;
    }

    std::unordered_map<String, Node> nodes_;
    std::vector<const String*> keys_; // of nodes_, by number; they never move
};

} // namespace orvcore::detail
