#include <tools/zelt/editing/PrettyJSON.h>

#include <orvcore/json/JSONSplice.h>

#include <algorithm>

namespace zelt {

namespace {

using orvcore::serialization::JSONOutline;
using Kind = JSONOutline::Kind;

// Numbers that belong together read best side by side: a colour, a scale.
// Values are copied from the text and never read as numbers: a formatted document has the digits of the stored one.
bool StaysOnALine(const JSONOutline& value)
{
    constexpr std::size_t kMostNumbers = 8;
    return value.children.empty() || (value.Is(Kind::kArray) && value.children.size() <= kMostNumbers &&
                                      std::all_of(value.children.begin(), value.children.end(),
                                                  [](const JSONOutline& one) { return one.Is(Kind::kNumber); }));
}

void Put(const JSONOutline& value, std::string_view text, std::size_t level, std::string& pretty)
{
    const bool isObject = value.Is(Kind::kObject);
    if (!isObject && !value.Is(Kind::kArray)) {
        pretty += text.substr(value.begin, value.end - value.begin);
        return;
    }
    const bool isShort = StaysOnALine(value);
    pretty += isObject ? '{' : '[';
    for (const JSONOutline& child : value.children) {
        pretty += &child == &value.children.front() ? "" : isShort ? ", " : ",";
        pretty += isShort ? "" : '\n' + std::string(2 * (level + 1), ' ');
        pretty += isObject ? orvcore::serialization::ToJSON(std::string_view(child.key)) + ": " : "";
        Put(child, text, level + 1, pretty);
    }
    pretty += isShort ? "" : '\n' + std::string(2 * level, ' ');
    pretty += isObject ? '}' : ']';
}

} // namespace

std::string PrettyJSON(std::string_view text)
{
    std::string pretty;
    Put(orvcore::serialization::ReadOutline(text), text, 0, pretty);
    return pretty + '\n';
}

} // namespace zelt
