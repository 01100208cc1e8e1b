#include <orvcore/json/JSONOutline.h>

#include <orvcore/json/JSON.h>

#include <algorithm>

namespace orvcore::serialization {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// A second reader of JSON beside that of JSONDocument, which does not tell where in the text a value stands. It follows
// the grammar only; what a number comes to, and whether a text is well-formed, is the other one's to judge.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : text_(text)
        , at_(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0)
    {
    }

    JSONOutline Document()
    {
        // Before the first value: an outline takes some hundred bytes for a value of two.
        if (text_.size() - at_ > kMaxJSONSize) {
            Fail("the text is larger than readers take");
        }
        JSONOutline root = Value(0);
        SkipSpace();
        if (at_ != text_.size()) {
            Fail("something follows the end of the document");
        }
        return root;
    }

private:
    [[noreturn]] void Fail(const std::string& what) const
    {
        throw json_outline_exception(what, at_);
    }
    // NUL at the end. A NUL in the text looks the same, but stands for nothing in the grammar, so every place that
    // meets one fails; only the message depends on which of the two it was.
    char Peek() const
    {
        return at_ < text_.size() ? text_[at_] : '\0';
    }
    void SkipSpace()
    {
        at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size());
    }
    void Expect(char c, const char* what)
    {
        SkipSpace();
        if (Peek() != c) {
            Fail(at_ == text_.size() ? "the text ends too early" : what);
        }
        ++at_;
    }

    // The limits are those of the other reader, counted in the same way: what is edited by its outline is read by that
    // one.
    JSONOutline Value(std::size_t depth)
    {
        if (depth > kMaxJSONDepth) {
            Fail("objects and lists are nested too deep");
        }
        if (++values_ > kMaxJSONValues) {
            Fail("there are more values than readers take");
        }
        SkipSpace();
        JSONOutline value;
        value.begin = at_;
        switch (Peek()) {
        case '{':
            value.kind = JSONOutline::Kind::kObject;
            Members(value, depth + 1);
            break;
        case '[':
            value.kind = JSONOutline::Kind::kArray;
            Elements(value, depth + 1);
            break;
        case '"':
            value.kind = JSONOutline::Kind::kString;
            String();
            break;
        default:
            Scalar(value);
        }
        value.end = at_;
        return value;
    }

    // True at the closing bracket of an object or array, which is then passed over.
    bool Closes(char bracket)
    {
        SkipSpace();
        if (Peek() != bracket) {
            return false;
        }
        ++at_;
        return true;
    }

    void Members(JSONOutline& object, std::size_t depth)
    {
        ++at_;
        if (Closes('}')) {
            return;
        }
        do {
            SkipSpace();
            const std::size_t keyBegin = at_;
            if (Peek() != '"') {
                Fail(at_ == text_.size() ? "the text ends too early" : "a key in quotation marks is expected");
            }
            String();
            std::string key = KeyText(text_.substr(keyBegin, at_ - keyBegin));
            Expect(':', "a colon is expected after the key");
            object.children.push_back(Value(depth));
            object.children.back().key = std::move(key);
            object.children.back().keyBegin = keyBegin;
        } while (Continues('}', "a comma or a closing brace is expected"));
    }

    void Elements(JSONOutline& array, std::size_t depth)
    {
        ++at_;
        if (Closes(']')) {
            return;
        }
        do {
            array.children.push_back(Value(depth));
        } while (Continues(']', "a comma or a closing bracket is expected"));
    }

    // True after a comma, false after the closing bracket.
    bool Continues(char bracket, const char* what)
    {
        if (Closes(bracket)) {
            return false;
        }
        Expect(',', what);
        return true;
    }

    // Finds the end only: bytes past ASCII are passed over, and no quotation mark or back-slash is a part of a
    // character.
    void String()
    {
        for (++at_; Peek() != '"'; ++at_) {
            if (at_ >= text_.size()) {
                Fail("a text is not closed");
            }
            if (static_cast<unsigned char>(text_[at_]) < ' ') {
                Fail("a text holds a bare control character");
            }
            if (text_[at_] == '\\') {
                Escape();
            }
        }
        ++at_;
    }

    void Escape()
    {
        ++at_;
        if (Peek() == 'u') {
            for (int i = 0; i < 4; ++i) {
                ++at_;
                if (std::string_view("0123456789abcdefABCDEF").find(Peek()) == std::string_view::npos) {
                    Fail("four hexadecimal digits are expected");
                }
            }
        } else if (at_ >= text_.size() || std::string_view("\"\\/bfnrt").find(Peek()) == std::string_view::npos) {
            Fail("an unknown escape sequence");
        }
    }

    // The key itself. Its text is well-formed as far as this scanner looks; surrogates are the JSON reader's to judge.
    std::string KeyText(std::string_view quoted) const
    {
        if (quoted.find('\\') == std::string_view::npos) {
            return std::string(quoted.substr(1, quoted.size() - 2));
        }
        try {
            const Variant tree = JSONParse(AsUTF8(quoted));
            return ToNarrow(*AsString(tree));
        } catch (const json_parse_exception& error) {
            Fail(error.what());
        }
    }

    void Scalar(JSONOutline& value)
    {
        for (const std::string_view word : {"null", "true", "false"}) {
            if (text_.substr(at_).starts_with(word)) {
                value.kind = word == "null" ? JSONOutline::Kind::kNull : JSONOutline::Kind::kBool;
                at_ += word.size();
                return;
            }
        }
        value.kind = JSONOutline::Kind::kNumber;
        Number();
    }

    void Digits(const char* what)
    {
        if (!IsDigit(Peek())) {
            Fail(at_ == text_.size() ? "the text ends too early" : what);
        }
        while (IsDigit(Peek())) {
            ++at_;
        }
    }

    void Number()
    {
        at_ += Peek() == '-' ? 1U : 0U;
        if (Peek() == '0' && IsDigit(at_ + 1 < text_.size() ? text_[at_ + 1] : '\0')) {
            Fail("a number begins with 0");
        }
        Digits("a value is expected");
        if (Peek() == '.') {
            ++at_;
            Digits("a digit is expected after the decimal point");
        }
        if (Peek() == 'e' || Peek() == 'E') {
            ++at_;
            at_ += Peek() == '-' || Peek() == '+' ? 1U : 0U;
            Digits("a digit is expected in the exponent");
        }
    }

    std::string_view text_;
    std::size_t at_;
    std::size_t values_ = 0;
};

} // namespace

json_outline_exception::json_outline_exception(const std::string& reason, std::size_t offset)
    : json_parse_exception(reason)
    , offset_(offset)
{
}

json_outline_exception::~json_outline_exception() = default;

const JSONOutline* JSONOutline::Find(std::string_view name) const
{
    const auto found =
        std::find_if(children.rbegin(), children.rend(), [&](const JSONOutline& child) { return child.key == name; });
    return kind == Kind::kObject && found != children.rend() ? &*found : nullptr;
}

JSONOutline ReadOutline(std::string_view text)
{
    return Scanner(text).Document();
}

void TextPlace::Pass(std::string_view text)
{
    const std::size_t lineEnd = text.rfind('\n');
    if (lineEnd != text.npos) {
        line += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
        column = 1;
        text.remove_prefix(lineEnd + 1);
    }
    // All bytes but those that continue a character.
    column += static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

} // namespace orvcore::serialization
