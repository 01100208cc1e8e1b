#pragma once

#include <orvcore/text/Strings.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace orvcore::serialization {

/// Where a writer puts a JSON value, piece by piece: `JSONTextWriter` makes text, `JSONTreeBuilder` a value tree.
/// Inside an object every value is preceded by its key. A text has the keys as they come, a tree sorts them.
/// A writer whose two forms have one order, as the record tables, puts them out in ascending byte order.
class JSONSink {
public:
    JSONSink() = default;
    JSONSink(const JSONSink&) = delete;
    JSONSink& operator=(const JSONSink&) = delete;
    virtual ~JSONSink() = default;

    virtual void BeginObject() = 0;
    virtual void EndObject() = 0;
    virtual void BeginArray() = 0;
    virtual void EndArray() = 0;
    /// The key of the next value; its bytes must stay valid until that value is written.
    virtual void Key(std::string_view key) = 0;
    /// The key written last, for messages about values; empty where there was none.
    virtual std::string_view LastKey() const noexcept = 0;
    /// How many objects and arrays the next value lies in.
    virtual std::size_t Depth() const noexcept = 0;

    /// The same for a key that is known to need no escape: printable ASCII without quotes and back-slashes.
    virtual void PlainKey(std::string_view key)
    {
        Key(key);
    }

    virtual void Null() = 0;
    virtual void Bool(bool value) = 0;
    virtual void Int(std::int64_t value) = 0;
    virtual void UInt(std::uint64_t value) = 0;
    virtual void Double(double value) = 0;
    /// A UTF-8 text; ill-formed sequences become U+FFFD.
    virtual void String(std::string_view text) = 0;
    /// A UTF-16 text; lone surrogates become U+FFFD.
    virtual void String(std::u16string_view text) = 0;
    /// One whole value that is JSON text already. @throws json_write_exception, which names the key, when it is not
    virtual void Raw(std::string_view json) = 0;

    /// A sink of the same kind for some elements of the array that is open, which another thread may fill: with one
    /// array. The last key's bytes must outlive it.
    virtual std::unique_ptr<JSONSink> NewPart() const = 0;
    /// Adds the elements of a part's array to the array that is open.
    virtual void AddPart(JSONSink& part) = 0;
};

} // namespace orvcore::serialization
