#include <tools/zelt/editing/TextTable.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/TextLayout.h>

#include <orvcore/json/JSONTextWriter.h>

#include <algorithm>
#include <optional>
#include <set>

namespace zelt {

// The table goes to a translator and comes back through a spreadsheet program, which may change the separator (";" or a
// tabulator in some languages), the line ends and the byte-order mark. A gap and an empty text differ: a gap changes
// nothing when it is read back, an empty text replaces one. CSV tells them apart by the quotation marks, which some
// programs drop; the JSON form does not depend on that.

namespace {

using orvcore::serialization::JSONOutline;
using orvcore::serialization::JSONSplice;
using orvcore::serialization::JSONTextWriter;

constexpr char kKeyColumn[] = "key";
constexpr char kTextsKey[] = "texts";

std::string CSVField(const std::string& text)
{
    if (!text.empty() && text.find_first_of(",\"\r\n") == text.npos) {
        return text;
    }
    std::string field = "\"";
    for (const char c : text) {
        field += c == '"' ? "\"\"" : std::string(1, c);
    }
    return field + '"';
}

// Takes fields off a text one after the other.
// A quoted field may hold line feeds, so lines are counted here and not taken apart first.
class CSVReader {
public:
    CSVReader(std::string_view text, char separator)
        : rest_(text)
        , separator_(separator)
    {
    }

    bool AtEnd() const
    {
        return rest_.empty();
    }
    std::size_t Line() const
    {
        return line_;
    }
    // The fields of a line; nothing for an empty one without quotation marks.
    std::vector<std::optional<std::string>> TakeLine()
    {
        std::vector<std::optional<std::string>> fields;
        bool goesOn = true;
        while (goesOn) {
            fields.push_back(TakeField());
            goesOn = !rest_.empty() && rest_.front() == separator_;
            rest_.remove_prefix(goesOn ? 1 : 0);
        }
        if (rest_.starts_with('\r')) {
            rest_.remove_prefix(1);
        }
        if (!rest_.empty() && rest_.front() != '\n') {
            throw UsageError("line " + std::to_string(line_) + ": something stands behind a closing quotation mark");
        }
        rest_.remove_prefix(rest_.empty() ? 0 : 1);
        ++line_;
        return fields;
    }

private:
    std::optional<std::string> TakeField()
    {
        if (rest_.starts_with('"')) {
            return TakeQuoted();
        }
        const std::size_t end = std::min(rest_.find_first_of(std::string{separator_, '\r', '\n'}), rest_.size());
        const std::string field(rest_.substr(0, end));
        rest_.remove_prefix(end);
        return field.empty() ? std::nullopt : std::optional(field);
    }

    std::string TakeQuoted()
    {
        std::string field;
        const std::size_t begin = line_;
        for (rest_.remove_prefix(1); !rest_.empty(); rest_.remove_prefix(1)) {
            if (rest_.starts_with("\"\"")) {
                rest_.remove_prefix(1);
            } else if (rest_.front() == '"') {
                rest_.remove_prefix(1);
                return field;
            }
            line_ += rest_.front() == '\n' ? 1U : 0U;
            field += rest_.front();
        }
        throw UsageError("line " + std::to_string(begin) + ": a quotation mark is not closed");
    }

    std::string_view rest_;
    char separator_;
    std::size_t line_ = 1;
};

TextTable ParseCSV(std::string_view text)
{
    const std::size_t keySize = sizeof kKeyColumn - 1;
    // Told by the first line, whose first field is known.
    const char separator = text.size() > keySize ? text[keySize] : ',';
    if (!text.starts_with(kKeyColumn) || std::string_view(",;\t").find(separator) == std::string_view::npos) {
        throw UsageError("line 1: the first column is not \"key\"");
    }
    CSVReader reader(text, separator);
    const auto locales = reader.TakeLine();
    TextTable table;
    while (!reader.AtEnd()) {
        const std::string line = "line " + std::to_string(reader.Line()) + ": ";
        const auto fields = reader.TakeLine();
        if (fields.size() == 1 && !fields.front()) {
            continue;
        }
        if (fields.size() > locales.size() || !fields.front()) {
            throw UsageError(line + (fields.front() ? "it has more fields than there are languages" : "it has no key"));
        }
        TextTable::Row& row = table.rows.emplace_back(TextTable::Row{*fields.front(), {}});
        for (std::size_t i = 1; i < fields.size(); ++i) {
            if (fields[i] && !locales[i]) {
                throw UsageError(line + "a text stands in a column without a language");
            }
            if (fields[i]) {
                row.texts[*locales[i]] = *fields[i];
            }
        }
    }
    return table;
}

TextTable::Row ParseObject(std::string_view line)
{
    const JSONSplice document{std::string(line)};
    const JSONOutline* texts = document.Root().Find(kTextsKey);
    TextTable::Row row{DecodedText(document, document.Root().Find(kKeyColumn)), {}};
    if (row.key.empty() || texts == nullptr || !texts->Is(JSONOutline::Kind::kObject)) {
        throw UsageError("it lacks \"key\" or \"texts\"");
    }
    for (const JSONOutline& text : texts->children) {
        if (text.Is(JSONOutline::Kind::kString)) {
            row.texts[text.key] = DecodedText(document, &text);
        } else if (!text.Is(JSONOutline::Kind::kNull)) {
            throw UsageError("the text for \"" + text.key + "\" is neither a string nor null");
        }
    }
    return row;
}

TextTable ParseObjects(std::string_view text)
{
    TextTable table;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.find_first_not_of(" \t\r") == line.npos) {
            continue;
        }
        try {
            table.rows.push_back(ParseObject(line));
        } catch (const std::exception& error) {
            throw UsageError("line " + std::to_string(number) + ": " + error.what());
        }
    }
    return table;
}

} // namespace

std::vector<std::string> TextTable::Locales() const
{
    std::set<std::string> locales;
    for (const Row& row : rows) {
        for (const auto& [locale, text] : row.texts) {
            locales.insert(locale);
        }
    }
    return {locales.begin(), locales.end()};
}

TextTable ReadTexts(const JSONSplice& document)
{
    TextTable table;
    VisitTexts(document, [&](const std::string& key, const TextPlace& place) {
        table.rows.push_back({key, TextsAt(document, place)});
    });
    return table;
}

std::string TextsAsTable(const TextTable& table)
{
    const auto locales = table.Locales();
    std::vector<std::vector<std::string>> rows{{"KEY"}};
    for (const std::string& locale : locales) {
        rows.front().push_back(Printable(locale));
    }
    for (const TextTable::Row& row : table.rows) {
        rows.push_back({Printable(row.key)});
        for (const std::string& locale : locales) {
            const auto found = row.texts.find(locale);
            rows.back().push_back(found == row.texts.end() ? "-" : Printable(found->second));
        }
    }
    return Table(rows, "");
}

std::string TextsAsCSV(const TextTable& table)
{
    const auto locales = table.Locales();
    std::string csv = kKeyColumn;
    for (const std::string& locale : locales) {
        csv += ',' + CSVField(locale);
    }
    for (const TextTable::Row& row : table.rows) {
        csv += '\n' + CSVField(row.key);
        for (const std::string& locale : locales) {
            const auto found = row.texts.find(locale);
            csv += ',' + (found == row.texts.end() ? "" : CSVField(found->second));
        }
    }
    return csv + '\n';
}

std::string TextsAsJSON(const TextTable& table)
{
    const auto locales = table.Locales();
    std::string lines;
    for (const TextTable::Row& row : table.rows) {
        JSONTextWriter writer;
        writer.BeginObject();
        writer.Key(kKeyColumn);
        writer.String(std::string_view(row.key));
        writer.Key(kTextsKey);
        writer.BeginObject();
        for (const std::string& locale : locales) {
            const auto found = row.texts.find(locale);
            writer.Key(locale);
            found == row.texts.end() ? writer.Null() : writer.String(std::string_view(found->second));
        }
        writer.EndObject();
        writer.EndObject();
        lines += orvcore::ToNarrow(writer.Take()) + '\n';
    }
    return lines;
}

TextTable ParseTexts(std::string_view text)
{
    // Spreadsheet programs put one in front.
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    text.remove_prefix(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    return text.starts_with('{') ? ParseObjects(text) : ParseCSV(text);
}

} // namespace zelt
