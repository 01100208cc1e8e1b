#include <orvappsupport/detail/SearchAnswer.h>

#include <orvcore/json/shared/JSONDocument.h>
#include <orvcore/text/Printable.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <memory_resource>
#include <optional>
#include <span>
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

// What the rows of a page are parts of: a text is copied only where it is kept.
struct PageContent {
    explicit PageContent(std::string_view json)
        : document(JSONDocument::Parse(orvcore::AsUTF8(json)))
    {
    }

    const JSONDocument document;
    std::vector<Value> values; // one row's after the other's
    std::pmr::monotonic_buffer_resource lists;
};

struct BadPage : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::optional<std::u8string_view> TextOf(const JSONNode& node)
{
    std::string_view text;
    return node.Get(text) && text.size() <= kMaxColumnBytes ? std::optional(orvcore::AsUTF8(text)) : std::nullopt;
}

// Numbers in a list are taken as their decimal texts.
Value ListOf(const JSONNode& node, PageContent& page)
{
    std::pmr::polymorphic_allocator<> allocator(&page.lists);
    const std::size_t size = node.Children().size();
    auto* const texts = allocator.allocate_object<std::u8string_view>(size);
    for (std::size_t i = 0; i < size; ++i) {
        const JSONNode& element = node.Children()[i];
        std::uint64_t number = 0;
        std::u8string_view text;
        if (const auto own = TextOf(element)) {
            text = *own;
        } else if (element.Get(number)) {
            const std::string decimal = std::to_string(number);
            char8_t* const digits = allocator.allocate_object<char8_t>(decimal.size());
            std::copy(decimal.begin(), decimal.end(), digits);
            text = {digits, decimal.size()};
        } else {
            return {};
        }
        std::construct_at(texts + i, text);
    }
    return std::span<const std::u8string_view>(texts, size);
}

Value ValueOf(const JSONNode& node, PageContent& page)
{
    std::uint64_t number = 0;
    if (node.IsArray()) {
        return ListOf(node, page);
    }
    if (node.Get(number)) {
        return number;
    }
    const auto text = TextOf(node);
    return text ? Value(*text) : Value();
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
Row ReadRow(const JSONNode& node, const std::vector<orvcore::UTF8String>& columns, std::span<Value> values,
            PageContent& page)
{
    Row row;
    row.values = values;
    std::size_t likely = 0;
    for (const JSONNode& member : node.Children()) {
        const std::string_view key = member.Key();
        if (key == "id" || key == "title") {
            (key == "id" ? row.id : row.title) = TextOf(member).value_or(std::u8string_view());
        } else if (key == "premium" || key == "licensed") {
            static_cast<void>(member.Get(key == "premium" ? row.premium : row.licensed)); // no bool changes nothing
        } else if (const std::size_t column = FindColumn(key, columns, likely); column < columns.size()) {
            values[column] = ValueOf(member, page);
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

void ReadRows(PageContent& page, int count, Results& results)
{
    const JSONNode* const rows = page.document.Root().Find("rows");
    if (rows == nullptr || !rows->IsArray()) {
        throw BadPage("the answer has no list \"rows\"");
    }
    if (rows->Children().size() > static_cast<std::size_t>(count)) {
        throw BadPage("the answer has more rows than were asked for");
    }
    const std::size_t columns = results.columns.size();
    page.values.resize(rows->Children().size() * columns);
    results.rows.reserve(rows->Children().size());
    for (const JSONNode& row : rows->Children()) {
        try {
            const std::span values(page.values.data() + results.rows.size() * columns, columns);
            results.rows.push_back(ReadRow(row, results.columns, values, page));
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
        const auto content = std::make_shared<PageContent>(json);
        results.content = content;
        results.total = ReadTotal(content->document.Root());
        ReadRows(*content, count, results);
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
