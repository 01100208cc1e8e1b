#include <bench/SearchBenchFloor.h>

#include <orvcore/text/Strings.h>
#include <orvcore/text/shared/TextFold.h>

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <stdexcept>

namespace bench {

namespace {

void Execute(sqlite3* database, const std::string& sql)
{
    if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(database));
    }
}

std::vector<std::string> Letters(const std::u8string& folded)
{
    std::vector<std::string> letters;
    for (const char8_t c : folded) {
        if ((c & 0xC0U) != 0x80) {
            letters.emplace_back();
        }
        letters.back() += static_cast<char>(c);
    }
    return letters;
}

// Each pair of neighbouring letters as one word of hexadecimal digits, the last letter paired with an end mark.
std::string Pairs(const std::u8string& text, bool withEnd)
{
    std::vector<std::string> letters = Letters(orvcore::FoldText(text));
    if (withEnd) {
        letters.emplace_back("\x02");
    }
    std::string out;
    for (std::size_t i = 0; i + 1 < letters.size(); ++i) {
        for (const char c : letters[i] + letters[i + 1]) {
            constexpr char kDigits[] = "0123456789abcdef";
            const auto byte = static_cast<unsigned char>(c);
            out += kDigits[byte / 16];
            out += kDigits[byte % 16];
        }
        out += ' ';
    }
    return out;
}

} // namespace

FullTextFloor::FullTextFloor(const std::string& file, Tokenizer tokenizer)
    : tokenizer_(tokenizer)
{
    sqlite3_open(file.c_str(), &database_);
    Execute(database_, "PRAGMA synchronous=OFF; PRAGMA journal_mode=WAL");
    const char* name = tokenizer == Tokenizer::Trigrams ? "trigram" : "unicode61";
    Execute(database_,
            "CREATE VIRTUAL TABLE rows USING fts5(key UNINDEXED, text, tokenize='" + std::string(name) + "')");
}

FullTextFloor::~FullTextFloor()
{
    sqlite3_close(database_);
}

double FullTextFloor::Insert(const std::vector<Template>& templates)
{
    std::vector<std::vector<std::u8string>> texts;
    for (const Template& each : templates) {
        texts.push_back(each.texts);
        if (tokenizer_ == Tokenizer::Bigrams) {
            for (std::u8string& text : texts.back()) {
                text = orvcore::ToUTF8(std::string_view(Pairs(text, true)));
            }
        }
    }
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database_, "INSERT INTO rows VALUES(?,?)", -1, &statement, nullptr);
    const auto start = std::chrono::steady_clock::now();
    Execute(database_, "BEGIN");
    for (std::size_t i = 0; i < templates.size(); ++i) {
        for (const std::u8string& text : texts[i]) {
            const std::string_view key = orvcore::AsNarrow(templates[i].path);
            sqlite3_bind_text64(statement, 1, key.data(), key.size(), SQLITE_STATIC, SQLITE_UTF8);
            sqlite3_bind_text64(statement, 2, orvcore::AsNarrow(text).data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
            sqlite3_step(statement);
            sqlite3_reset(statement);
        }
    }
    Execute(database_, "COMMIT");
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    sqlite3_finalize(statement);
    return taken.count();
}

std::optional<std::string> FullTextFloor::Expression(const std::u8string& term) const
{
    const std::u8string folded = orvcore::FoldText(term);
    const std::size_t letters = Letters(folded).size();
    switch (tokenizer_) {
    case Tokenizer::Words:
        return "\"" + orvcore::ToNarrow(term) + "\"*";
    case Tokenizer::Trigrams:
        return letters < 3 ? std::nullopt : std::optional("\"" + orvcore::ToNarrow(term) + "\"");
    case Tokenizer::Bigrams:
        break;
    }
    if (letters > 1) {
        return "\"" + Pairs(term, false) + "\"";
    }
    const std::string pair = Pairs(term, true);
    return pair.substr(0, pair.size() - 3) + "*";
}

std::optional<std::vector<std::u16string>> FullTextFloor::Match(const std::vector<std::u8string>& terms)
{
    std::vector<std::u16string> result;
    for (std::size_t i = 0; i < terms.size(); ++i) {
        const auto expression = Expression(terms[i]);
        if (!expression) {
            return std::nullopt;
        }
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database_, "SELECT key FROM rows WHERE text MATCH ?", -1, &statement, nullptr);
        sqlite3_bind_text(statement, 1, expression->c_str(), -1, SQLITE_STATIC);
        std::vector<std::u16string> keys;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            keys.emplace_back(static_cast<const char16_t*>(sqlite3_column_text16(statement, 0)));
        }
        sqlite3_finalize(statement);
        std::sort(keys.begin(), keys.end());
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
        std::vector<std::u16string> both;
        std::set_intersection(keys.begin(), keys.end(), result.begin(), result.end(), std::back_inserter(both));
        result = i == 0 ? std::move(keys) : std::move(both);
    }
    return result;
}

} // namespace bench
