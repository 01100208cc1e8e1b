#pragma once

#include <orvcore/json/JSONErrors.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvcore::serialization {

/// Where one value stands in a JSON text, and the values inside it, all in the text's order; a key that repeats is
/// there as often. Offsets count bytes from the text's beginning. A plain value.
struct ORVPLATFORM_API JSONOutline {
    enum class Kind { kNull, kBool, kNumber, kString, kArray, kObject };

    Kind kind = Kind::kNull;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t keyBegin = 0; ///< an object's member: where its key's quotation mark stands
    std::string key;          ///< an object's member: its key, unescaped
    std::vector<JSONOutline> children;

    /// The member with this key, the last one where it repeats (the one that readers take); null when there is none.
    const JSONOutline* Find(std::string_view name) const;
    bool Is(Kind wanted) const noexcept
    {
        return kind == wanted;
    }
};

/// A text is not JSON; tells where.
class ORVPLATFORM_API json_outline_exception : public json_parse_exception {
public:
    json_outline_exception(const std::string& reason, std::size_t offset);
    ~json_outline_exception() override;
    /// Where reading stopped, in bytes from the text's beginning.
    std::size_t GetOffset() const noexcept
    {
        return offset_;
    }

private:
    std::size_t offset_;
};

/// Finds the values of a JSON text under the rules and limits of `JSONParse`, but for what lies inside a value: whether
/// a text is well-formed UTF-8 without lone surrogates, and a number not too large, is not looked at.
/// Takes time and memory linear in the text. Thread-safe. @throws json_outline_exception
ORVPLATFORM_API JSONOutline ReadOutline(std::string_view text);

/// A place in a text as editors tell it, worked out by passing over what stands before it.
struct ORVPLATFORM_API TextPlace {
    std::size_t line = 1;
    std::size_t column = 1; ///< in characters

    /// Goes on behind `text`, which follows what was passed before.
    void Pass(std::string_view text);
};

} // namespace orvcore::serialization
