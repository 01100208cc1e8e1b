#pragma once

#include <kinlet/detail/RecordTables.h>

#include <gtest/gtest.h>

// The value tree of any record that has a table.
template <class Record>
orvcore::serialization::Variant TreeOf(const Record& record)
{
    return orvcore::serialization::detail::ToTree(record);
}

// Fills any record that has a table; false when the tree is of no usable kind.
template <class Record>
bool FromTree(const orvcore::serialization::Variant& tree, Record& out)
{
    return orvcore::serialization::detail::FromTree(tree, out);
}

// The record after a trip through JSON text.
template <class Record>
Record ThroughText(const Record& record)
{
    const auto text = orvcore::serialization::GetJSONUTF8String(TreeOf(record), false);
    Record result;
    EXPECT_TRUE(FromTree(orvcore::serialization::JSONParse(text), result));
    return result;
}

// The record that a JSON text holds.
template <class Record>
Record FromText(std::u8string_view text)
{
    Record result;
    EXPECT_TRUE(FromTree(orvcore::serialization::JSONParse(text), result));
    return result;
}

template <class Record>
std::string ToText(const Record& record)
{
    return orvcore::ToNarrow(orvcore::serialization::GetJSONUTF8String(TreeOf(record), false));
}

// The key that reading `text` reports as missing; "" when it reads.
template <class Record>
std::string MissingKey(const orvcore::serialization::Variant& tree)
{
    try {
        Record result;
        return FromTree(tree, result) ? "" : "(no object)";
    } catch (const orvcore::serialization::missing_key_exception& error) {
        return error.GetKey();
    }
}
