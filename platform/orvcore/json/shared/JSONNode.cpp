#include <orvcore/json/shared/JSONDocument.h>

#include <cmath>
#include <limits>

// Writers differ in how they put a number: 5, 5.0 and 5e0 are one value to most of them. So an integer is read where
// the text has a double without fraction, and a double where it has an integer, but only where both are exactly the
// same number: a value that would change on its way through a record is of no usable kind.

namespace orvcore::serialization {

namespace {

// 2^63 and 2^64 as doubles: the first values past the integer types.
constexpr double kInt64End = 9223372036854775808.0;
constexpr double kUInt64End = 18446744073709551616.0;

} // namespace

const JSONNode* JSONNode::Find(std::string_view key) const noexcept
{
    if (kind_ != JSONKind::kObject) {
        return nullptr;
    }
    // From the end: of a key that repeats the last one counts. One after the other, because objects are small, and
    // records do not come here: their tables take the members as they pass (JSONTable.h).
    for (const JSONNode* child = value_.children + size_; child != value_.children;) {
        --child;
        if (child->Key() == key) {
            return child;
        }
    }
    return nullptr;
}

bool JSONNode::Get(std::int64_t& out) const noexcept
{
    if (kind_ == JSONKind::kInt64) {
        out = value_.int64;
        return true;
    }
    if (kind_ == JSONKind::kUInt64) {
        if (value_.uint64 > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            return false;
        }
        out = static_cast<std::int64_t>(value_.uint64);
        return true;
    }
    // The double -2^63 may come from an integer below the range, too.
    if (kind_ == JSONKind::kDouble && value_.number > -kInt64End && value_.number < kInt64End &&
        std::trunc(value_.number) == value_.number) {
        out = static_cast<std::int64_t>(value_.number);
        return true;
    }
    return false;
}

bool JSONNode::Get(std::uint64_t& out) const noexcept
{
    if (kind_ == JSONKind::kUInt64) {
        out = value_.uint64;
        return true;
    }
    if (kind_ == JSONKind::kDouble && value_.number >= 0 && value_.number < kUInt64End &&
        std::trunc(value_.number) == value_.number) {
        out = static_cast<std::uint64_t>(value_.number);
        return true;
    }
    if (kind_ == JSONKind::kInt64 && value_.int64 >= 0) {
        out = static_cast<std::uint64_t>(value_.int64);
        return true;
    }
    return false;
}

bool JSONNode::Get(double& out) const noexcept
{
    if (kind_ == JSONKind::kDouble) {
        out = value_.number;
        return true;
    }
    if (kind_ == JSONKind::kInt64) {
        const auto converted = static_cast<double>(value_.int64);
        // Rounded up to 2^63 it no longer fits the integer type, and converting it back would not be defined.
        if (converted >= kInt64End || static_cast<std::int64_t>(converted) != value_.int64) {
            return false;
        }
        out = converted;
        return true;
    }
    if (kind_ == JSONKind::kUInt64) {
        const auto converted = static_cast<double>(value_.uint64);
        if (converted >= kUInt64End || static_cast<std::uint64_t>(converted) != value_.uint64) {
            return false;
        }
        out = converted;
        return true;
    }
    return false;
}

// Recurses as deep as the document nests: both ways to a document end at kMaxJSONDepth.
Variant JSONNode::ToTree() const
{
    switch (kind_) {
    case JSONKind::kNull:
        return {};
    case JSONKind::kBool:
        return value_.boolean;
    case JSONKind::kInt64:
        return value_.int64;
    case JSONKind::kUInt64:
        return value_.uint64;
    case JSONKind::kDouble:
        return value_.number;
    case JSONKind::kString:
        return UTF8String(AsUTF8({value_.text, size_}));
    case JSONKind::kArray: {
        Array array;
        array.reserve(size_);
        for (const JSONNode& child : Children()) {
            array.push_back(std::make_shared<Variant>(child.ToTree()));
        }
        return array;
    }
    case JSONKind::kObject: {
        Object object;
        for (const JSONNode& child : Children()) {
            object.insert_or_assign(UTF8String(AsUTF8(child.Key())), std::make_shared<Variant>(child.ToTree()));
        }
        return object;
    }
    }
    return {};
}

} // namespace orvcore::serialization
