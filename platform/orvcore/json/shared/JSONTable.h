#pragma once

#include <orvcore/json/JSONTextWriter.h>
#include <orvcore/json/shared/JSONCodec.h>
#include <orvcore/json/shared/JSONTreeBuilder.h>

#include <array>
#include <functional>
#include <string>
#include <tuple>

// A JSON object's shape, written once. `JSONTable<Record>::fields` lists the object's keys in the order in which the
// format documents them; the reader and the writer both walk that list. The text puts the keys out in ascending byte
// order, which is worked out from the list at compile time.
namespace orvcore::serialization::detail {

/// Specialised for each record: `static constexpr auto fields = Fields(Required(...), Optional(...), ...)` and, for
/// records that keep what they do not know, `static constexpr auto unknown = &Record::unknownKeys` (or a callable that
/// leads from the record to its `UnknownKeys`).
template <class Record>
struct JSONTable;

enum class Presence : std::uint8_t {
    kRequired, // absent or unusable: missing-key error
    kOptional, // absent: the record's default stays; unusable: missing-key error
    kLenient,  // absent or unusable: the record's default stays
};

struct Always {
    template <class Record>
    constexpr bool operator()(const Record&) const
    {
        return true;
    }
};

// A field that is read and never written has this in the writer's place.
struct NotWritten {};

// A field of a table that is never checked has this instead of a judge.
struct NotChecked {};

template <class ReadFunction, class WriteFunction, class Condition = Always, class CheckFunction = NotChecked>
struct Field {
    std::string_view key;
    Presence presence;
    ReadFunction read;   // bool(const JSONNode&, Record&)
    WriteFunction write; // void(JSONSink&, const Record&)
    Condition condition{};
    CheckFunction check{}; // bool(const JSONNode&): what `read` would return or raise

    /// Written only for records that satisfy `condition`.
    template <class C>
    constexpr auto WrittenWhen(C when) const
    {
        return Field<ReadFunction, WriteFunction, C, CheckFunction>{key, presence, read, write, when, check};
    }
    /// Judged by `judge` where the table is checked.
    template <class C>
    constexpr auto CheckedBy(C judge) const
    {
        return Field<ReadFunction, WriteFunction, Condition, C>{key, presence, read, write, condition, judge};
    }
};

template <class C, class Record, class Member>
constexpr auto MemberField(std::string_view key, Presence presence, Member Record::*member)
{
    using Used = std::conditional_t<std::is_void_v<C>, Codec<Member>, C>;
    const auto read = [member](const JSONNode& node, Record& record) { return Used::Read(node, record.*member); };
    const auto write = [member](JSONSink& sink, const Record& record) { Used::Write(sink, record.*member); };
    return Field<decltype(read), decltype(write)>{key, presence, read, write}.CheckedBy(CheckValue<Member, Used>);
}

/// @name Rows over a data member. `C` names a codec other than the member type's own.
/// @{
template <class C = void, class Record, class Member>
constexpr auto Required(std::string_view key, Member Record::*member)
{
    return MemberField<C>(key, Presence::kRequired, member);
}
template <class C = void, class Record, class Member>
constexpr auto Optional(std::string_view key, Member Record::*member)
{
    return MemberField<C>(key, Presence::kOptional, member);
}
template <class C = void, class Record, class Member>
constexpr auto Lenient(std::string_view key, Member Record::*member)
{
    return MemberField<C>(key, Presence::kLenient, member);
}
/// @}

/// A row over a getter and a setter: `read` and `write` are any callables of the shapes that `Field` names.
template <class ReadFunction, class WriteFunction>
constexpr auto CustomField(std::string_view key, Presence presence, ReadFunction read, WriteFunction write)
{
    return Field<ReadFunction, WriteFunction>{key, presence, read, write};
}

template <class Whole, class Access, class Read, class Write, class Condition, class Check>
constexpr auto LiftRow(Access access, const Field<Read, Write, Condition, Check>& row)
{
    const auto read = [access, inner = row.read](const JSONNode& node, Whole& whole) {
        return inner(node, std::invoke(access, whole));
    };
    const auto condition = [access, inner = row.condition](const Whole& whole) {
        return inner(std::invoke(access, whole));
    };
    if constexpr (std::is_same_v<Write, NotWritten>) {
        return Field<decltype(read), NotWritten, Always, Check>{row.key, row.presence, read, {}, {}, row.check};
    } else {
        const auto write = [access, inner = row.write](JSONSink& sink, const Whole& whole) {
            inner(sink, std::invoke(access, whole));
        };
        return Field<decltype(read), decltype(write), decltype(condition), Check>{row.key, row.presence, read,
                                                                                  write,   condition,    row.check};
    }
}

template <class... F>
constexpr auto Fields(F... fields)
{
    return std::make_tuple(fields...);
}

/// The rows of a part as rows of the whole that holds it. `access` leads from the whole to the part: a member pointer,
/// or a callable that takes the whole by reference, const or not, and returns the part the same way. The rows may then
/// be joined with the whole's own by `std::tuple_cat`.
template <class Whole, class Access, class... Rows>
constexpr auto Lift(Access access, const std::tuple<Rows...>& rows)
{
    return std::apply([access](const auto&... row) { return std::make_tuple(LiftRow<Whole>(access, row)...); }, rows);
}

// The keys of a table in both their orders: the table's own and ascending byte order.
// How a record is read: one pass over the object's members notes for each row of the table which member it has, then
// the rows are read. How it is written: the rows in ascending order of keys, and the kept unknown keys merged in
// between. Both orders of the keys come from the compiler.
template <std::size_t N>
struct KeyOrder {
    std::array<std::string_view, N> tableKeys{};
    std::array<std::string_view, N> keys{}; // ascending
    std::array<std::size_t, N> rows{};      // ascending place to row of the table
    std::array<std::size_t, N> places{};    // and back

    // The row of `key`, or N. `last` is the row found before, or N. Documents have their keys in one of the two orders
    // (this library writes ascending ones, people follow the format's description), so the next key of either order is
    // nearly always the one; the search is for the rest.
    std::size_t Find(std::string_view key, std::size_t last) const
    {
        const std::size_t nextPlace = last < N ? places[last] + 1 : 0;
        if (nextPlace < N && IsSame(keys[nextPlace], key)) {
            return rows[nextPlace];
        }
        const std::size_t nextRow = last < N ? last + 1 : 0;
        if (nextRow < N && IsSame(tableKeys[nextRow], key)) {
            return nextRow;
        }
        const auto at = std::lower_bound(keys.begin(), keys.end(), key);
        return at != keys.end() && *at == key ? rows[static_cast<std::size_t>(at - keys.begin())] : N;
    }

private:
    // The views' own comparison is a call, which takes longer than most keys.
    static bool IsSame(std::string_view one, std::string_view other)
    {
        return one.size() == other.size() && std::equal(one.begin(), one.end(), other.begin());
    }
};

template <class Table, std::size_t... I>
constexpr auto OrderOf(const Table& table, std::index_sequence<I...>)
{
    KeyOrder<sizeof...(I)> order{};
    order.tableKeys = {std::get<I>(table).key...};
    const auto& keys = order.tableKeys;
    // Sorts both arrays together, while the compiler runs: a table has some dozens of rows.
    for (std::size_t row = 0; row < sizeof...(I); ++row) {
        std::size_t at = row;
        for (; at > 0 && keys[row] < order.keys[at - 1]; --at) {
            order.keys[at] = order.keys[at - 1];
            order.rows[at] = order.rows[at - 1];
        }
        order.keys[at] = keys[row];
        order.rows[at] = row;
    }
    for (std::size_t place = 0; place < sizeof...(I); ++place) {
        order.places[order.rows[place]] = place;
    }
    return order;
}

template <class Record, const auto& Table>
struct TableWalker {
    static constexpr std::size_t kCount = std::tuple_size_v<std::remove_cvref_t<decltype(Table)>>;
    static constexpr auto kOrder = OrderOf(Table, std::make_index_sequence<kCount>());

    static void Read(const JSONNode& object, Record& record, UnknownKeys* unknown)
    {
        // Rows are read in the table's order, whatever the document's: it settles which of an older and a newer key for
        // the same member wins.
        const auto read = [&record](const auto& row, const JSONNode& node) { return row.read(node, record); };
        TakeRows(FindRows(object, unknown), read, std::make_index_sequence<kCount>());
    }

    /// Raises what Read would raise, and keeps nothing.
    static void Check(const JSONNode& object)
    {
        const auto check = [](const auto& row, const JSONNode& node) { return row.check(node); };
        TakeRows(FindRows(object, nullptr), check, std::make_index_sequence<kCount>());
    }

    static void Write(JSONSink& sink, const Record& record, const UnknownKeys* unknown)
    {
        sink.BeginObject();
        UnknownKeys::const_iterator next{};
        UnknownKeys::const_iterator end{};
        if (unknown != nullptr) {
            next = unknown->begin();
            end = unknown->end();
        }
        WriteRows(sink, record, next, end, std::make_index_sequence<kCount>());
        for (; next != end; ++next) {
            WriteUnknown(sink, *next);
        }
        sink.EndObject();
    }

private:
    using FoundRows = std::array<const JSONNode*, kCount>;

    // The member of each row; of a repeated key the last one.
    static FoundRows FindRows(const JSONNode& object, UnknownKeys* unknown)
    {
        FoundRows found{};
        std::size_t last = kCount;
        for (const JSONNode& child : object.Children()) {
            const std::size_t row = kOrder.Find(child.Key(), last);
            if (row < kCount) {
                found[row] = &child;
                last = row;
            } else if (unknown != nullptr) {
                KeepUnknown(child, *unknown);
            }
        }
        return found;
    }

    static void KeepUnknown(const JSONNode& node, UnknownKeys& unknown)
    {
        unknown.insert_or_assign(std::string(node.Key()), ToNarrow(GetJSONUTF8String(node.ToTree(), false)));
    }

    template <class Take, std::size_t... I>
    static void TakeRows(const FoundRows& found, const Take& take, std::index_sequence<I...>)
    {
        (TakeRow(std::get<I>(Table), found[I], take), ...);
    }

    template <class Row, class Take>
    static void TakeRow(const Row& row, const JSONNode* node, const Take& take)
    {
        const bool satisfied = node == nullptr ? row.presence != Presence::kRequired
                                               : take(row, *node) || row.presence == Presence::kLenient;
        if (!satisfied) {
            throw missing_key_exception(std::string(row.key));
        }
    }

    template <std::size_t... I>
    static void WriteRows(JSONSink& sink, const Record& record, UnknownKeys::const_iterator& next,
                          UnknownKeys::const_iterator end, std::index_sequence<I...>)
    {
        (WriteRow(std::get<kOrder.rows[I]>(Table), sink, record, next, end), ...);
    }

    template <class Row>
    static void WriteRow(const Row& row, JSONSink& sink, const Record& record, UnknownKeys::const_iterator& next,
                         UnknownKeys::const_iterator end)
    {
        // Both lists ascend, so merging them keeps the text in byte order.
        for (; next != end && next->first < row.key; ++next) {
            WriteUnknown(sink, *next);
        }
        if (next != end && next->first == row.key) {
            ++next; // the record's own value holds, also where it is not written
        }
        if constexpr (!std::is_same_v<std::remove_cvref_t<decltype(row.write)>, NotWritten>) {
            if (row.condition(record)) {
                sink.PlainKey(row.key);
                row.write(sink, record);
            }
        }
    }

    static void WriteUnknown(JSONSink& sink, const UnknownKeys::value_type& member)
    {
        sink.Key(member.first);
        sink.Raw(member.second);
    }
};

template <class T>
concept TabledRecord = requires
{
    JSONTable<T>::fields;
};

template <class T>
concept KeepsUnknownKeys = requires
{
    JSONTable<T>::unknown;
};

/// A record with a table is an object; anything else under its key is unusable.
template <TabledRecord T>
struct TableCodec {
    using Walker = TableWalker<T, JSONTable<T>::fields>;
    static bool Read(const JSONNode& node, T& out)
    {
        if (!node.IsObject()) {
            return false;
        }
        if constexpr (KeepsUnknownKeys<T>) {
            Walker::Read(node, out, &std::invoke(JSONTable<T>::unknown, out));
        } else {
            Walker::Read(node, out, nullptr);
        }
        return true;
    }
    static bool Check(const JSONNode& node)
    {
        if (!node.IsObject()) {
            return false;
        }
        Walker::Check(node);
        return true;
    }
    static void Write(JSONSink& sink, const T& value)
    {
        if constexpr (KeepsUnknownKeys<T>) {
            Walker::Write(sink, value, &std::invoke(JSONTable<T>::unknown, value));
        } else {
            Walker::Write(sink, value, nullptr);
        }
    }
};

template <TabledRecord T>
struct Codec<T> : TableCodec<T> {
};

/// A value as a tree.
template <class T>
Variant ToTree(const T& value)
{
    JSONTreeBuilder builder;
    Codec<T>::Write(builder, value);
    return builder.Take();
}

/// A value from a tree; `T{}` filled from it. @return false when the tree is of no usable kind.
/// @throws missing_key_exception by the rules of the record's table.
template <class T>
bool FromTree(const Variant& tree, T& out)
{
    return Codec<T>::Read(JSONDocument::FromTree(tree).Root(), out);
}

/// A value as compact JSON text of about `expected` bytes.
template <class T>
UTF8String ToText(const T& value, std::size_t expected = 0)
{
    JSONTextWriter writer(false, expected);
    Codec<T>::Write(writer, value);
    return writer.Take();
}

} // namespace orvcore::serialization::detail
