#include <orvcore/JSONTextWriter.h>

#include <array>
#include <charconv>
#include <cmath>

namespace orvcore::serialization {

namespace {

// What a byte needs inside a JSON string: 0 nothing, 'u' the \u00XX form, 8 a look at its UTF-8 sequence, else the
// letter after the back-slash.
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

void AppendEscape(UTF8String& out, unsigned char byte)
{
    out.push_back(u8'\\');
    out.push_back(kEscapes[byte]);
    if (kEscapes[byte] == u8'u') {
        out.append(u8"00");
        out.push_back(kHexDigits[byte >> 4U]);
        out.push_back(kHexDigits[byte & 0x0FU]);
    }
}

template <class Number>
void AppendNumber(UTF8String& out, Number value)
{
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    out.append(AsUTF8({digits.data(), static_cast<std::size_t>(end - digits.data())}));
}

} // namespace

JSONTextWriter::JSONTextWriter(bool formatted)
    : formatted_(formatted)
{
}

JSONTextWriter::~JSONTextWriter() = default;

UTF8String JSONTextWriter::Take()
{
    UTF8String result = std::move(text_);
    text_.clear();
    needComma_ = false;
    return result;
}

void JSONTextWriter::NewLine()
{
    text_.push_back(u8'\n');
    text_.append(depth_ * 2, u8' ');
}

void JSONTextWriter::BeforeValue()
{
    if (afterKey_) {
        afterKey_ = false;
    } else {
        if (needComma_) {
            text_.push_back(u8',');
        }
        if (formatted_ && depth_ > 0) {
            NewLine();
        }
    }
    needComma_ = true;
}

void JSONTextWriter::Begin(char8_t bracket)
{
    BeforeValue();
    text_.push_back(bracket);
    ++depth_;
    needComma_ = false;
}

void JSONTextWriter::End(char8_t bracket)
{
    --depth_;
    if (formatted_ && needComma_) {
        NewLine();
    }
    text_.push_back(bracket);
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
    lastKey_ = key;
    Quote(key);
    text_.push_back(u8':');
    if (formatted_) {
        text_.push_back(u8' ');
    }
    afterKey_ = true;
}

void JSONTextWriter::Null()
{
    Raw("null");
}

void JSONTextWriter::Bool(bool value)
{
    Raw(value ? "true" : "false");
}

void JSONTextWriter::Int(std::int64_t value)
{
    BeforeValue();
    AppendNumber(text_, value);
}

void JSONTextWriter::UInt(std::uint64_t value)
{
    BeforeValue();
    AppendNumber(text_, value);
}

void JSONTextWriter::Double(double value)
{
    if (!std::isfinite(value)) {
        const std::string where = lastKey_.empty() ? "" : " under \"" + std::string(lastKey_) + "\"";
        throw json_write_exception("a number" + where + " is not finite and has no JSON form");
    }
    BeforeValue();
    const std::size_t before = text_.size();
    AppendNumber(text_, value);
    if (text_.find_first_of(u8".e", before) == UTF8String::npos) {
        text_.append(u8".0");
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
        const UTF8String mended = ToUTF8(ToUTF16(text));
        return Quote(AsNarrow(mended));
    }
    text_.push_back(u8'"');
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (kEscapes[byte] != 0) {
            text_.append(AsUTF8(text.substr(start, i - start)));
            AppendEscape(text_, byte);
            start = i + 1;
        }
    }
    text_.append(AsUTF8(text.substr(start)));
    text_.push_back(u8'"');
}

void JSONTextWriter::String(std::u16string_view text)
{
    BeforeValue();
    text_.push_back(u8'"');
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] < kEscapes.size() && kEscapes[text[i]] != 0) {
            AppendUTF8(text.substr(start, i - start), text_);
            AppendEscape(text_, static_cast<unsigned char>(text[i]));
            start = i + 1;
        }
    }
    AppendUTF8(text.substr(start), text_);
    text_.push_back(u8'"');
}

void JSONTextWriter::Raw(std::string_view json)
{
    BeforeValue();
    text_.append(AsUTF8(json));
}

void JSONTextWriter::RawElements(std::string_view jsonArray)
{
    if (jsonArray.size() > 2) {
        Raw(jsonArray.substr(1, jsonArray.size() - 2));
    }
}

} // namespace orvcore::serialization
