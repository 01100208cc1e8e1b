#pragma once

#include <sources/CapsuleEntry.h>

#include <orvcore/json/JSONTextWriter.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zelt {

/// What the page is told of a template besides its entry.
struct RowFacts {
    std::uint64_t id = 0;
    std::size_t folder = 0; ///< its number in the table of folders
    std::string names;      ///< JSON: an object from locale to name; empty: the entry's own name
};

/// True of a package without a definition that this library can read.
bool IsUnreadable(const orvcapsule::CapsuleEntry& entry);

/// Writes a template as a list, which `catalogue.js` takes apart: a hundred thousand of them travel.
void WriteRow(orvcore::serialization::JSONTextWriter& writer, const orvcapsule::CapsuleEntry& entry,
              const RowFacts& facts);

/// Writes a member that is a list of texts.
template <class Texts>
void WriteList(orvcore::serialization::JSONTextWriter& writer, std::string_view key, const Texts& texts)
{
    writer.Key(key);
    writer.BeginArray();
    for (const std::string& text : texts) {
        writer.String(std::string_view(text));
    }
    writer.EndArray();
}

} // namespace zelt
