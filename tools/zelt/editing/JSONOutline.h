#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zelt {

/// Where one value stands in a JSON text, and the values inside it. Offsets count bytes from the text's beginning.
struct JSONOutline {
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

/// A text that is not JSON: what is wrong and where.
class OutlineError : public std::runtime_error {
public:
    OutlineError(const std::string& what, std::size_t offset)
        : std::runtime_error(what)
        , offset_(offset)
    {
    }
    std::size_t GetOffset() const noexcept
    {
        return offset_;
    }

private:
    std::size_t offset_;
};

/// Finds the values of a JSON text under the rules of `orvcore::serialization::JSONParse`. @throws OutlineError
JSONOutline ReadOutline(std::string_view text);

/// "line 3, column 17", both counted from 1, the column in characters.
std::string PlaceInText(std::string_view text, std::size_t offset);

} // namespace zelt
