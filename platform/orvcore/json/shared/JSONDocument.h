#pragma once

#include <orvcore/json/JSON.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace orvcore::serialization {

enum class JSONKind : std::uint8_t { kNull, kBool, kInt64, kUInt64, kDouble, kString, kArray, kObject };

/// One value of a `JSONDocument`, with its key when it is an object's member. A small value that points into the
/// document: valid as long as the document lives. Reading is safe from any number of threads.
class JSONNode {
public:
    JSONNode() = default;

    JSONKind Kind() const noexcept
    {
        return kind_;
    }
    bool IsObject() const noexcept
    {
        return kind_ == JSONKind::kObject;
    }
    bool IsArray() const noexcept
    {
        return kind_ == JSONKind::kArray;
    }
    bool IsString() const noexcept
    {
        return kind_ == JSONKind::kString;
    }

    /// The member's key, UTF-8; empty for array elements and the root.
    std::string_view Key() const noexcept
    {
        return {key_, keySize_};
    }
    /// The members or elements in document order; empty for every other kind.
    std::span<const JSONNode> Children() const noexcept
    {
        return kind_ >= JSONKind::kArray ? std::span<const JSONNode>(value_.children, size_)
                                         : std::span<const JSONNode>();
    }
    /// The member with this key, the last one where it repeats; null when there is none or this is no object.
    ORVPLATFORM_API const JSONNode* Find(std::string_view key) const noexcept;

    /// @name Typed reading
    /// True and `out` set when the value is of the type; `out` is left alone otherwise. Between integers and
    /// doubles a value converts when no digit is lost.
    /// @{
    ORVPLATFORM_API bool Get(std::int64_t& out) const noexcept;
    ORVPLATFORM_API bool Get(std::uint64_t& out) const noexcept;
    ORVPLATFORM_API bool Get(double& out) const noexcept;
    bool Get(bool& out) const noexcept
    {
        if (kind_ != JSONKind::kBool) {
            return false;
        }
        out = value_.boolean;
        return true;
    }
    bool Get(std::string_view& out) const noexcept
    {
        if (kind_ != JSONKind::kString) {
            return false;
        }
        out = {value_.text, size_};
        return true;
    }
    /// @}

    /// The value as a tree of its own. @throws std::bad_alloc only.
    ORVPLATFORM_API Variant ToTree() const;

private:
    friend class JSONDocumentBuilder;

    union Value {
        std::int64_t int64;
        std::uint64_t uint64;
        double number;
        bool boolean;
        const char* text;
        const JSONNode* children;
    };

    const char* key_ = nullptr;
    Value value_ = {0};
    std::uint32_t keySize_ = 0;
    std::uint32_t size_ = 0;
    JSONKind kind_ = JSONKind::kNull;
};

/// A JSON text read into a compact, immutable form: the quick way to read a document. The value tree of `JSONParse`
/// is the convenient one. Movable; reading is safe from any number of threads.
class ORVPLATFORM_API JSONDocument {
public:
    /// Reads a text under the rules of `JSONParse`. `room` tells how many bytes behind the text belong to the same
    /// allocation: from `kJSONTextRoom` on, the text is not copied. What the bytes hold does not matter.
    /// @throws json_parse_exception as `JSONParse` does.
    static JSONDocument Parse(std::u8string_view text, std::size_t room = 0);
    /// The same form over an existing tree, whose texts it points into: `tree` must outlive the document.
    /// @throws json_write_exception for a foreign node or too deep a tree.
    static JSONDocument FromTree(const Variant& tree);

    /// Why `Parse` refuses so large a text (`kMaxJSONSize`, `kMaxJSONValues`); null when it does not.
    static const char* BeyondLimits(std::string_view json) noexcept;

    JSONDocument(JSONDocument&&) noexcept;
    JSONDocument& operator=(JSONDocument&&) noexcept;
    ~JSONDocument();

    const JSONNode& Root() const noexcept;

private:
    friend class JSONDocumentBuilder;
    struct Storage;
    explicit JSONDocument(std::unique_ptr<Storage> storage) noexcept;
    std::unique_ptr<Storage> storage_;
};

} // namespace orvcore::serialization
