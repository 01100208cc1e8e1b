#pragma once

#include <orvcore/json/JSONSink.h>
#include <orvcore/json/shared/JSONDocument.h>
#include <orvcore/tasks/ParallelFor.h>
#include <orvcore/text/Guid.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <map>
#include <type_traits>
#include <utility>
#include <vector>

// How one C++ type stands in JSON. A codec has two static functions:
//   bool Read(const JSONNode&, T&)    false when the value is of no usable kind; T is then left in any valid state
//   void Write(JSONSink&, const T&)
// and, where judging takes much less than making, a third:
//   bool Check(const JSONNode&)       what Read would return or raise, with nothing made
namespace orvcore::serialization::detail {

template <class T>
struct Codec;

/// Whether the codec `C` would take the node for a T; raises what reading it would raise.
template <class T, class C = Codec<T>>
bool CheckValue(const JSONNode& node)
{
    if constexpr (requires { C::Check(node); }) {
        return C::Check(node);
    } else {
        T scratch{};
        return C::Read(node, scratch);
    }
}

template <>
struct Codec<bool> {
    static bool Read(const JSONNode& node, bool& out)
    {
        return node.Get(out);
    }
    static void Write(JSONSink& sink, bool value)
    {
        sink.Bool(value);
    }
};

template <>
struct Codec<double> {
    static bool Read(const JSONNode& node, double& out)
    {
        return node.Get(out);
    }
    static void Write(JSONSink& sink, double value)
    {
        sink.Double(value);
    }
};

// A signed integer that must fit T.
template <class T>
requires(std::is_integral_v<T>&& std::is_signed_v<T>) struct Codec<T> {
    static bool Read(const JSONNode& node, T& out)
    {
        std::int64_t value = 0;
        if (!node.Get(value) || value < std::numeric_limits<T>::min() || value > std::numeric_limits<T>::max()) {
            return false;
        }
        out = static_cast<T>(value);
        return true;
    }
    static void Write(JSONSink& sink, T value)
    {
        sink.Int(value);
    }
};

// An unsigned integer that must fit T.
template <class T>
requires(std::is_integral_v<T>&& std::is_unsigned_v<T> && !std::is_same_v<T, bool>) struct Codec<T> {
    static bool Read(const JSONNode& node, T& out)
    {
        std::uint64_t value = 0;
        if (!node.Get(value) || value > std::numeric_limits<T>::max()) {
            return false;
        }
        out = static_cast<T>(value);
        return true;
    }
    static void Write(JSONSink& sink, T value)
    {
        sink.UInt(value);
    }
};

// An enumeration as its number; numbers without a name are kept.
template <class T>
requires std::is_enum_v<T>
struct Codec<T> {
    using Number = std::underlying_type_t<T>;
    static bool Read(const JSONNode& node, T& out)
    {
        Number value{};
        if (!Codec<Number>::Read(node, value)) {
            return false;
        }
        out = static_cast<T>(value);
        return true;
    }
    static void Write(JSONSink& sink, T value)
    {
        Codec<Number>::Write(sink, static_cast<Number>(value));
    }
};

// Any text of a document can be made one of each kind.
struct TextCheck {
    static bool Check(const JSONNode& node)
    {
        return node.IsString();
    }
};

template <>
struct Codec<std::string> : TextCheck {
    static bool Read(const JSONNode& node, std::string& out)
    {
        std::string_view text;
        if (!node.Get(text)) {
            return false;
        }
        out = text;
        return true;
    }
    static void Write(JSONSink& sink, const std::string& value)
    {
        sink.String(value);
    }
};

template <>
struct Codec<UTF8String> : TextCheck {
    static bool Read(const JSONNode& node, UTF8String& out)
    {
        std::string_view text;
        if (!node.Get(text)) {
            return false;
        }
        out = AsUTF8(text);
        return true;
    }
    static void Write(JSONSink& sink, const UTF8String& value)
    {
        sink.String(AsNarrow(value));
    }
};

template <>
struct Codec<UTF16String> : TextCheck {
    static bool Read(const JSONNode& node, UTF16String& out)
    {
        std::string_view text;
        if (!node.Get(text)) {
            return false;
        }
        out = ToUTF16(text);
        return true;
    }
    static void Write(JSONSink& sink, const UTF16String& value)
    {
        sink.String(std::u16string_view(value));
    }
};

template <>
struct Codec<Guid> {
    static bool Read(const JSONNode& node, Guid& out)
    {
        std::string_view text;
        const auto guid = node.Get(text) ? Guid::FromString(text) : std::nullopt;
        out = guid.value_or(Guid());
        return guid.has_value();
    }
    static void Write(JSONSink& sink, const Guid& value)
    {
        sink.String(std::string_view(value.ToString()));
    }
};

/// Lists with more elements than this convert on all workers of the CPU-bound executor.
inline constexpr std::size_t kParallelThreshold = 512;
/// How many elements one piece of such a conversion takes: a list that is shared out gives five and more.
inline constexpr std::size_t kParallelGrain = 128;

// Writes `count` elements in order, each by `write(JSONSink&, index)`.
template <class WriteElement>
void WriteElements(JSONSink& sink, std::size_t count, const WriteElement& write)
{
    sink.BeginArray();
    if (count <= kParallelThreshold) {
        for (std::size_t i = 0; i < count; ++i) {
            write(sink, i);
        }
    } else {
        // Each part is a sink of its own, filled by one worker; they are joined in list order, so the text is the same
        // as without workers.
        std::vector<std::unique_ptr<JSONSink>> parts((count + kParallelGrain - 1) / kParallelGrain);
        ParallelFor(parts.size(), 1, [&](std::size_t begin, std::size_t end) {
            for (std::size_t part = begin; part < end; ++part) {
                parts[part] = sink.NewPart();
                parts[part]->BeginArray();
                const std::size_t last = std::min(count, (part + 1) * kParallelGrain);
                for (std::size_t i = part * kParallelGrain; i < last; ++i) {
                    write(*parts[part], i);
                }
                parts[part]->EndArray();
            }
        });
        for (const auto& part : parts) {
            sink.AddPart(*part);
        }
    }
    sink.EndArray();
}

// Calls `read(index)` for every index below `count`; false as soon as one call returned false.
template <class ReadElement>
bool ReadElements(std::size_t count, const ReadElement& read)
{
    if (count <= kParallelThreshold) {
        for (std::size_t i = 0; i < count; ++i) {
            if (!read(i)) {
                return false;
            }
        }
        return true;
    }
    // Every element is a separate object that one call fills; only the verdict is shared. An exception of a call ends
    // the loop and comes out of ParallelFor.
    std::atomic<bool> usable = true;
    ParallelFor(count, kParallelGrain, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end && usable.load(std::memory_order_relaxed); ++i) {
            if (!read(i)) {
                usable = false;
            }
        }
    });
    return usable;
}

template <class T>
struct Codec<std::vector<T>> {
    static_assert(!std::is_same_v<T, bool>, "elements must be separate objects");
    static bool Read(const JSONNode& node, std::vector<T>& out)
    {
        if (!node.IsArray()) {
            return false;
        }
        const auto children = node.Children();
        // As many as there are nodes already: of a text kMaxJSONValues at most.
        std::vector<T> elements(children.size());
        if (!ReadElements(children.size(), [&](std::size_t i) { return Codec<T>::Read(children[i], elements[i]); })) {
            return false;
        }
        out = std::move(elements);
        return true;
    }
    static bool Check(const JSONNode& node)
    {
        const auto children = node.Children();
        return node.IsArray() &&
               ReadElements(children.size(), [&](std::size_t i) { return CheckValue<T>(children[i]); });
    }
    static void Write(JSONSink& sink, const std::vector<T>& value)
    {
        WriteElements(sink, value.size(), [&](JSONSink& to, std::size_t i) { Codec<T>::Write(to, value[i]); });
    }
};

// A map from locale to value is an object keyed by locale name.
template <class T>
struct Codec<std::map<UTF16String, T>> {
    static bool Read(const JSONNode& node, std::map<UTF16String, T>& out)
    {
        if (!node.IsObject()) {
            return false;
        }
        // Read aside, as lists are: after a failure `out` is what it was.
        std::map<UTF16String, T> members;
        for (const JSONNode& child : node.Children()) {
            const auto [member, isNew] = members.try_emplace(ToUTF16(child.Key())); // a record is large to move
            if (!isNew) {
                member->second = T();
            }
            if (!Codec<T>::Read(child, member->second)) {
                return false;
            }
        }
        out = std::move(members);
        return true;
    }
    static bool Check(const JSONNode& node)
    {
        const auto children = node.Children();
        return node.IsObject() && std::all_of(children.begin(), children.end(), CheckValue<T>);
    }
    static void Write(JSONSink& sink, const std::map<UTF16String, T>& value)
    {
        // The map is ordered by UTF-16 code units, JSON keys by UTF-8 bytes; the two differ past the surrogates.
        std::vector<std::pair<std::string, const T*>> members;
        members.reserve(value.size());
        for (const auto& [key, member] : value) {
            members.emplace_back(ToNarrow(key), &member);
        }
        std::stable_sort(members.begin(), members.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        sink.BeginObject();
        for (const auto& [key, member] : members) {
            sink.Key(key);
            Codec<T>::Write(sink, *member);
        }
        sink.EndObject();
    }
};

} // namespace orvcore::serialization::detail
