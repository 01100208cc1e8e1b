#include <orvappsupport/detail/SearchAnswer.h>

#include <orvcore/json/shared/JSONDocument.h>
#include <orvcore/text/Printable.h>

#include <limits>
#include <optional>
#include <stdexcept>

// Reads a page of results, which may be anything. A column of the wrong kind costs itself. A row without an identifier
// costs the page: rows are placed by their position in the whole result, so that leaving one out would move all later
// ones up. Texts have a limit each, and the page as a whole the reader's (JSON.h), so an answer takes memory in
// proportion to its bytes.

namespace orvappsupport::detail {

using orvcore::serialization::JSONDocument;
using orvcore::serialization::JSONNode;
using search::Error;
using search::kMaxColumnBytes;
using search::Results;
using search::Row;
using search::Value;

namespace {

constexpr std::size_t kMaxMessageBytes = 500;

struct BadPage : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A text, or a number as its decimal text.
std::optional<orvcore::UTF8String> TextOf(const JSONNode& node)
{
    std::string_view text;
    std::uint64_t number = 0;
    if (node.Get(text) && text.size() <= kMaxColumnBytes) {
        return orvcore::ToUTF8(text);
    }
    if (node.Get(number)) {
        return orvcore::ToUTF8(std::to_string(number));
    }
    return std::nullopt;
}

// Numbers in a list are taken as their decimal texts.
Value ListOf(const JSONNode& node)
{
    std::vector<orvcore::UTF8String> texts;
    texts.reserve(node.Children().size());
    for (const JSONNode& element : node.Children()) {
        auto text = TextOf(element);
        if (!text) {
            return {};
        }
        texts.push_back(std::move(*text));
    }
    return texts;
}

Value ValueOf(const JSONNode& node)
{
    std::uint64_t number = 0;
    if (node.IsArray()) {
        return ListOf(node);
    }
    if (node.Get(number)) {
        return number;
    }
    auto text = node.IsString() ? TextOf(node) : std::nullopt;
    return text ? Value(std::move(*text)) : Value();
}

orvcore::UTF8String PlainTextOf(const JSONNode& node)
{
    return node.IsString() ? TextOf(node).value_or(orvcore::UTF8String()) : orvcore::UTF8String();
}

// The column of this name. Services tell them in one order, so the one after the last is looked at first.
std::size_t FindColumn(std::string_view name, const std::vector<orvcore::UTF8String>& columns, std::size_t likely)
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::size_t column = (likely + i) % columns.size();
        if (orvcore::AsNarrow(columns[column]) == name) {
            return column;
        }
    }
    return columns.size();
}

// Of a key that repeats the last value counts, as everywhere.
Row ReadRow(const JSONNode& node, const std::vector<orvcore::UTF8String>& columns)
{
    Row row;
    row.values.resize(columns.size());
    std::size_t likely = 0;
    for (const JSONNode& member : node.Children()) {
        const std::string_view key = member.Key();
        if (key == "id" || key == "title") {
            (key == "id" ? row.id : row.title) = PlainTextOf(member);
        } else if (key == "premium" || key == "licensed") {
            static_cast<void>(member.Get(key == "premium" ? row.premium : row.licensed)); // no bool changes nothing
        } else if (const std::size_t column = FindColumn(key, columns, likely); column < columns.size()) {
            row.values[column] = ValueOf(member);
            likely = column + 1;
        }
    }
    if (row.id.empty()) {
        throw BadPage("has no usable \"id\"");
    }
    return row;
}

int ReadTotal(const JSONNode& page)
{
    const JSONNode* const node = page.Find("total");
    std::int64_t total = -1;
    if (node == nullptr || !node->Get(total) || total < 0 || total > std::numeric_limits<int>::max()) {
        throw BadPage("the answer has no usable \"total\"");
    }
    return static_cast<int>(total);
}

void ReadRows(const JSONNode& page, int count, Results& results)
{
    const JSONNode* const rows = page.Find("rows");
    if (rows == nullptr || !rows->IsArray()) {
        throw BadPage("the answer has no list \"rows\"");
    }
    if (rows->Children().size() > static_cast<std::size_t>(count)) {
        throw BadPage("the answer has more rows than were asked for");
    }
    results.rows.reserve(rows->Children().size());
    for (const JSONNode& row : rows->Children()) {
        try {
            results.rows.push_back(ReadRow(row, results.columns));
        } catch (const BadPage& bad) {
            throw BadPage("row " + std::to_string(results.rows.size() + 1) + " of the answer " + bad.what());
        }
    }
}

} // namespace

Error ReadPage(std::string_view json, int count, Results& results)
{
    std::string reason;
    try {
        const JSONDocument document = JSONDocument::Parse(orvcore::AsUTF8(json));
        results.total = ReadTotal(document.Root());
        ReadRows(document.Root(), count, results);
        return Error::None;
    } catch (const BadPage& bad) {
        reason = bad.what();
    } catch (const orvcore::serialization::json_parse_exception& bad) {
        reason = std::string("the answer is not JSON: ") + bad.what();
    }
    results.total = 0;
    results.rows.clear();
    results.message = orvcore::ToUTF8(reason);
    return Error::BadAnswer;
}

std::string ReadErrorMessage(std::string_view json)
{
    try {
        const JSONDocument document = JSONDocument::Parse(orvcore::AsUTF8(json));
        const JSONNode* const error = document.Root().Find("error");
        const JSONNode* const message = error != nullptr ? error->Find("message") : nullptr;
        std::string_view text;
        if (message != nullptr && message->Get(text)) {
            return orvcore::Printable(text.substr(0, kMaxMessageBytes));
        }
    } catch (const orvcore::serialization::json_parse_exception&) { // a page of a proxy, say
    }
    return {};
}

} // namespace orvappsupport::detail
