#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace orvcapsule::detail {

/// What a definition may hold at one place, by docs/definition.schema.json. As long as the process runs.
struct Shape {
    enum Kind : unsigned {
        kNull = 1,
        kBool = 2,
        kInteger = 4,
        kNumber = 8,
        kText = 16,
        kList = 32,
        kObject = 64,
        kAnything = 127,
    };
    /// A value that is known here; others are allowed.
    struct Choice {
        std::string_view text;   ///< of a text
        std::int64_t number = 0; ///< of a number
        std::string_view title;  ///< what it means; may be empty
    };

    std::string_view name;  ///< among the schema's definitions; empty where it has none
    std::string_view title; ///< for people
    unsigned kinds = kAnything;
    std::int64_t least = std::numeric_limits<std::int64_t>::min();  ///< of an integer
    std::uint64_t most = std::numeric_limits<std::uint64_t>::max(); ///< of an integer
    std::size_t fewestItems = 0;
    std::size_t mostItems = std::numeric_limits<std::size_t>::max();
    std::vector<Choice> choices;
    const Shape* items = nullptr; ///< of a list's elements; null: anything
    std::map<std::string_view, const Shape*> members;
    std::vector<std::string_view> required;
    const Shape* others = nullptr; ///< of members by locale or other free names; null: there are none
    bool keepsUnknown = false;     ///< members of other names are kept
    bool isPart = false;           ///< a broken object spoils the value that it is a part of, as in a localised text
    std::map<std::int64_t, const Shape*> controlKinds; ///< of a control: its other members, by kind

    bool Allows(Kind kind) const noexcept
    {
        return (kinds & kind) != 0;
    }
};

/// The text of docs/definition.schema.json.
std::string_view DefinitionSchema();

/// The whole definition's. Thread-safe.
const Shape& DefinitionShape();

/// "an integer from 0 to 255", "a list of 4 numbers": what stands where `shape` is wanted.
std::string Wanted(const Shape& shape);

} // namespace orvcapsule::detail
