#include <kinlet/detail/RecordTables.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace orvcore::serialization::detail {

namespace {

using boost::gregorian::date;

constexpr std::string_view kDateKey = "date";

struct SpecialDate {
    std::string_view text;
    boost::date_time::special_values value;
};
constexpr std::array kSpecialDates = {
    SpecialDate{"not-a-date", boost::date_time::not_a_date_time},
    SpecialDate{"+infinity", boost::date_time::pos_infin},
    SpecialDate{"-infinity", boost::date_time::neg_infin},
};

std::string DateText(const date& day)
{
    if (day.is_special()) {
        const auto value = day.as_special();
        const auto* found = std::find_if(kSpecialDates.begin(), kSpecialDates.end(),
                                         [value](const SpecialDate& special) { return special.value == value; });
        return std::string(found != kSpecialDates.end() ? found->text : kSpecialDates.front().text);
    }
    const auto parts = day.year_month_day();
    std::string text = "0000-00-00";
    const auto put = [&text](std::size_t last, unsigned number) {
        for (; number != 0; number /= 10, --last) {
            text[last] = static_cast<char>('0' + number % 10);
        }
    };
    put(3, parts.year);
    put(6, parts.month.as_number());
    put(9, parts.day);
    return text;
}

// A number of exactly the digits of `text`; 0 when there is anything else.
// 0 is no day, month or year of the calendar, so the date that is made of it is refused below.
unsigned short Digits(std::string_view text)
{
    unsigned short number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : static_cast<unsigned short>(0);
}

bool ParseDate(std::string_view text, date& out)
{
    for (const SpecialDate& special : kSpecialDates) {
        if (text == special.text) {
            out = date(special.value);
            return true;
        }
    }
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
        return false;
    }
    try {
        out = date(Digits(text.substr(0, 4)), Digits(text.substr(5, 2)), Digits(text.substr(8, 2)));
    } catch (const std::out_of_range&) { // no such day, or a year that the calendar type does not reach
        return false;
    }
    return true;
}

// An object with anything beside the date is none: a cell has no place to keep the rest.
bool ReadDate(const JSONNode& node, date& out)
{
    const auto members = node.Children();
    std::string_view text;
    return members.size() == 1 && members[0].Key() == kDateKey && members[0].Get(text) && ParseDate(text, out);
}

void WriteCell(JSONSink& sink, std::monostate)
{
    sink.Null();
}
void WriteCell(JSONSink& sink, const UTF16String& text)
{
    sink.String(std::u16string_view(text));
}
void WriteCell(JSONSink& sink, double number)
{
    sink.Double(number);
}
void WriteCell(JSONSink& sink, bool flag)
{
    sink.Bool(flag);
}
void WriteCell(JSONSink& sink, const date& day)
{
    sink.BeginObject();
    sink.Key(kDateKey);
    sink.String(std::string_view(DateText(day)));
    sink.EndObject();
}

} // namespace

bool Codec<kinlet::SpreadsheetCell>::Read(const JSONNode& node, kinlet::SpreadsheetCell& out)
{
    switch (node.Kind()) {
    case JSONKind::kNull:
        out.emplace<std::monostate>();
        return true;
    case JSONKind::kBool:
        return node.Get(out.emplace<bool>());
    case JSONKind::kInt64:
    case JSONKind::kUInt64:
    case JSONKind::kDouble:
        return node.Get(out.emplace<double>());
    case JSONKind::kString:
        return Codec<UTF16String>::Read(node, out.emplace<UTF16String>());
    case JSONKind::kObject:
        return ReadDate(node, out.emplace<date>());
    case JSONKind::kArray:
        break;
    }
    return false;
}

void Codec<kinlet::SpreadsheetCell>::Write(JSONSink& sink, const kinlet::SpreadsheetCell& value)
{
    std::visit([&sink](const auto& held) { WriteCell(sink, held); }, value);
}

} // namespace orvcore::serialization::detail
