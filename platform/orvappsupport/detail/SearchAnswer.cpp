#include <orvappsupport/detail/SearchAnswer.h>

#include <orvcore/json/shared/JSONDocument.h>
#include <orvcore/text/Printable.h>

#include <limits>
#include <optional>
#include <stdexcept>

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

Row ReadRow(const JSONNode& node, const std::vector<orvcore::UTF8String>& columns)
{
    Row row;
    const JSONNode* const id = node.Find("id");
    std::string_view text;
    if (id == nullptr || !id->Get(text) || text.empty() || text.size() > kMaxColumnBytes) {
        throw BadPage("has no usable \"id\"");
    }
    row.id = orvcore::ToUTF8(text);
    if (const JSONNode* const title = node.Find("title"); title != nullptr && title->IsString()) {
        row.title = TextOf(*title).value_or(orvcore::UTF8String());
    }
    for (const auto& [key, flag] : {std::pair("premium", &row.premium), std::pair("licensed", &row.licensed)}) {
        if (const JSONNode* const value = node.Find(key)) {
            static_cast<void>(value->Get(*flag)); // it stays as it is where the value is none
        }
    }
    row.values.reserve(columns.size());
    for (const orvcore::UTF8String& column : columns) {
        const JSONNode* const value = node.Find(orvcore::AsNarrow(column));
        row.values.push_back(value != nullptr ? ValueOf(*value) : Value());
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
