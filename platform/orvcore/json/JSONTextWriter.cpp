#include <orvcore/json/JSONTextWriter.h>

#include <orvcore/json/detail/JSONWriteError.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

// Text is put into a string that is longer than the text, so that most pieces cost a comparison and a copy. Commas and
// line breaks are written in front of a value, when it is known that one comes: `needComma_` says that a value stands
// before it at this level, `afterKey_` that the key has brought both already. Depth is counted, not limited: the
// writers' own records are shallow, and foreign values go through Raw, which judges them.

namespace orvcore::serialization {

namespace {

// What a byte needs inside a JSON string: 0 nothing, 'u' the \u00XX form, else the letter after the back-slash.
constexpr std::array<char8_t, 256> kEscapes = [] {
    std::array<char8_t, 256> table{};
    for (std::size_t i = 0; i < 0x20; ++i) {
        table[i] = u8'u';
    }
    table['\b'] = u8'b';
    table['\f'] = u8'f';
    table['\n'] = u8'n';
    table['\r'] = u8'r';
    table['\t'] = u8't';
    table['"'] = u8'"';
    table['\\'] = u8'\\';
    return table;
}();

constexpr std::u8string_view kHexDigits = u8"0123456789abcdef";

// The most that one byte becomes when it is escaped.
constexpr std::size_t kLongestEscape = 6;

char8_t* PutEscape(unsigned char byte, char8_t* to)
{
    *to++ = u8'\\';
    *to++ = kEscapes[byte];
    if (kEscapes[byte] == u8'u') {
        *to++ = u8'0';
        *to++ = u8'0';
        *to++ = kHexDigits[byte >> 4U];
        *to++ = kHexDigits[byte & 0x0FU];
    }
    return to;
}

// The most objects and arrays of this value that one of its values lies in.
std::size_t DeepestValue(const JSONNode& value)
{
    std::size_t deepest = 0;
    for (const JSONNode& child : value.Children()) {
        deepest = std::max(deepest, 1 + DeepestValue(child));
    }
    return deepest;
}

// Texts are escaped in slices, so that the room for the worst case stays small.
constexpr std::size_t kSlice = 4096;

// The length of a text's first slice, which does not part a surrogate pair.
std::size_t SliceLength(std::u16string_view text)
{
    if (text.size() <= kSlice) {
        return text.size();
    }
    const char16_t last = text[kSlice - 1];
    return last >= 0xD800 && last <= 0xDBFF ? kSlice - 1 : kSlice;
}

char8_t* PutEscaped(std::u16string_view text, char8_t* to)
{
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] < 0x80) {
            const auto byte = static_cast<unsigned char>(text[i++]);
            if (kEscapes[byte] != 0) {
                to = PutEscape(byte, to);
            } else {
                *to++ = byte;
            }
            continue;
        }
        std::size_t end = i;
        while (end < text.size() && text[end] >= 0x80) {
            ++end;
        }
        to = EncodeUTF8(text.substr(i, end - i), to);
        i = end;
    }
    return to;
}

} // namespace

JSONTextWriter::JSONTextWriter(bool formatted, std::size_t expected)
    : text_(expected, u8'\0')
    , formatted_(formatted)
{
}

JSONTextWriter::~JSONTextWriter() = default;

// Until here the string is longer than the text: `size_` bytes are written, the rest is room.
UTF8String JSONTextWriter::Take()
{
    text_.resize(std::exchange(size_, 0));
    needComma_ = false;
    return std::exchange(text_, {});
}

void JSONTextWriter::Grow(std::size_t bytes)
{
    // Twice as much each time, so that a text is copied a few times and not for each piece.
    constexpr std::size_t kFirst = 4096;
    text_.resize(std::max({kFirst, text_.size() * 2, size_ + bytes}));
}

void JSONTextWriter::Put(std::string_view bytes)
{
    std::memcpy(Reserve(bytes.size()), bytes.data(), bytes.size());
    size_ += bytes.size();
}

void JSONTextWriter::NewLine()
{
    Put(u8'\n');
    std::fill_n(Reserve(depth_ * 2), depth_ * 2, u8' ');
    size_ += depth_ * 2;
}

void JSONTextWriter::Begin(char8_t bracket)
{
    BeforeValue();
    Put(bracket);
    ++depth_;
    needComma_ = false;
}

void JSONTextWriter::End(char8_t bracket)
{
    --depth_;
    if (formatted_ && needComma_) {
        NewLine();
    }
    Put(bracket);
    needComma_ = true;
}

void JSONTextWriter::BeginObject()
{
    Begin(u8'{');
}
void JSONTextWriter::EndObject()
{
    End(u8'}');
}
void JSONTextWriter::BeginArray()
{
    Begin(u8'[');
}
void JSONTextWriter::EndArray()
{
    End(u8']');
}

void JSONTextWriter::Key(std::string_view key)
{
    BeforeValue();
    Quote(key);
    Put(u8':');
    AfterKey(key);
}

void JSONTextWriter::PlainKey(std::string_view key)
{
    BeforeValue();
    char8_t* const to = Reserve(key.size() + 3);
    to[0] = u8'"';
    std::memcpy(to + 1, key.data(), key.size());
    to[key.size() + 1] = u8'"';
    to[key.size() + 2] = u8':';
    size_ += key.size() + 3;
    AfterKey(key);
}

void JSONTextWriter::Null()
{
    BeforeValue();
    Put("null");
}

void JSONTextWriter::Bool(bool value)
{
    BeforeValue();
    Put(value ? "true" : "false");
}

template <class Number>
void JSONTextWriter::PutNumber(Number value)
{
    constexpr std::size_t kLongestNumber = 32;
    auto* to = reinterpret_cast<char*>(Reserve(kLongestNumber));
    size_ += static_cast<std::size_t>(std::to_chars(to, to + kLongestNumber, value).ptr - to);
}

void JSONTextWriter::Int(std::int64_t value)
{
    BeforeValue();
    PutNumber(value);
}

void JSONTextWriter::UInt(std::uint64_t value)
{
    BeforeValue();
    PutNumber(value);
}

// to_chars gives the shortest digits that read back as the same double. A whole number gets its ".0", or it would be
// read back as an integer.
void JSONTextWriter::Double(double value)
{
    if (!std::isfinite(value)) {
        throw detail::NotFinite(lastKey_);
    }
    BeforeValue();
    const std::size_t before = size_;
    PutNumber(value);
    const std::u8string_view digits(text_.data() + before, size_ - before);
    if (digits.find_first_of(u8".e") == std::u8string_view::npos) {
        Put(".0");
    }
}

void JSONTextWriter::String(std::string_view text)
{
    BeforeValue();
    Quote(text);
}

void JSONTextWriter::Quote(std::string_view text)
{
    if (!IsWellFormedUTF8(text)) {
        // Through UTF-16, which makes U+FFFD of what is ill-formed, by the same rules as everywhere else.
        const UTF8String wellFormed = ToUTF8(ToUTF16(text));
        return Quote(AsNarrow(wellFormed));
    }
    Put(u8'"');
    // A slice may end inside a character: all of its bytes are copied as they are, the rest of them with the next
    // slice.
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), kSlice))) {
        char8_t* const begin = Reserve(std::min(text.size(), kSlice) * kLongestEscape);
        char8_t* to = begin;
        for (const char c : text.substr(0, kSlice)) {
            const auto byte = static_cast<unsigned char>(c);
            if (kEscapes[byte] != 0) {
                to = PutEscape(byte, to);
            } else {
                *to++ = byte;
            }
        }
        size_ += static_cast<std::size_t>(to - begin);
    }
    Put(u8'"');
}

void JSONTextWriter::String(std::u16string_view text)
{
    BeforeValue();
    Put(u8'"');
    while (!text.empty()) {
        const std::u16string_view slice = text.substr(0, SliceLength(text));
        char8_t* const begin = Reserve(slice.size() * kLongestEscape);
        size_ += static_cast<std::size_t>(PutEscaped(slice, begin) - begin);
        text.remove_prefix(slice.size());
    }
    Put(u8'"');
}

void JSONTextWriter::Raw(std::string_view json)
{
    // A value that is fine by itself may lie too deep here, and no reader would take the whole text then.
    // It is parsed only to be judged, and written as it stands: a value that this library does not know keeps its
    // digits and the order of its keys.
    if (depth_ + DeepestValue(detail::ReadRaw(json, lastKey_).Root()) > kMaxJSONDepth) {
        throw json_write_exception("a value" + detail::UnderKey(lastKey_) + " is nested too deep");
    }
    BeforeValue();
    Put(json);
}

std::unique_ptr<JSONSink> JSONTextWriter::NewPart() const
{
    auto part = std::make_unique<JSONTextWriter>(formatted_);
    // The part's own array stands for the one that is open, so that depth checks, messages and indents are the same in
    // it. Its bracket is not kept and needs no line break.
    part->depth_ = depth_ - 1;
    part->afterKey_ = true;
    part->lastKey_ = lastKey_;
    return part;
}

void JSONTextWriter::AddPart(JSONSink& part)
{
    const auto& written = dynamic_cast<const JSONTextWriter&>(part);
    std::string_view elements = AsNarrow({written.text_.data(), written.size_});
    // Between the part's own brackets. A line break stands before each element, and before the closing bracket.
    elements = elements.substr(1, elements.size() - 2);
    elements = elements.substr(0, elements.find_last_not_of(" \n") + 1);
    if (!elements.empty()) {
        if (needComma_) {
            Put(u8',');
        }
        needComma_ = true;
        Put(elements);
    }
}

} // namespace orvcore::serialization
