// Any texts and any term, a line each, the term first: folding must give well-formed text that folds to itself, and the
// index must find exactly the texts that hold the term, and suggest none that does not.
#include <orvcore/text/shared/TextFold.h>
#include <orvmetadatadb/RapidFindDB.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Lines = std::vector<std::u16string>;

[[noreturn]] void Fail(const char* what, std::u16string_view text)
{
    std::fprintf(stderr, "%s: %s\n", what, orvcore::ToNarrow(text).c_str());
    std::abort();
}

Lines Split(std::string_view input)
{
    Lines lines;
    while (!input.empty()) {
        const std::size_t end = input.find('\n');
        lines.push_back(orvcore::ToUTF16(input.substr(0, end)));
        input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    }
    return lines;
}

std::u8string CheckedFold(const std::u16string& text)
{
    std::u8string folded = orvcore::FoldText(text);
    if (!orvcore::IsWellFormedUTF8(orvcore::AsNarrow(folded)) || orvcore::FoldText(folded) != folded) {
        Fail("a folded text is not its own folded form", text);
    }
    return folded;
}

void Compare(orvmetadatadb::RapidFindDB& index, const Lines& lines)
{
    const std::vector<std::u16string> tables = {u"nametable"};
    std::vector<std::u16string> expected;
    const std::u8string term = CheckedFold(lines[0]);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const std::u16string key(1, static_cast<char16_t>(i));
        if (!lines[i].empty()) {
            index.InsertRow(key, {lines[i]});
            if (CheckedFold(lines[i]).find(term) != std::u8string::npos) {
                expected.push_back(key);
            }
        }
    }
    std::vector<std::u16string> keys;
    if (index.Match({{lines[0], tables, {0}}}, 0, keys) != 0 || keys != expected) {
        Fail("a search differs from looking through the texts", lines[0]);
    }
    std::vector<orvmetadatadb::SimilarItem> items;
    index.GetSimilarList(lines[0], 100, tables, items, 0);
    for (const auto& item : items) {
        if (CheckedFold(item.text).find(term) == std::u8string::npos) {
            Fail("a suggestion lacks the typed text", item.text);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t kMostBytes = 4000; // every text below the length up to which texts are searched
    if (size == 0 || size > kMostBytes) {
        return 0;
    }
    const Lines lines = Split({reinterpret_cast<const char*>(data), size});
    orvmetadatadb::RapidFindDB index;
    index.Open(u":memory:");
    index.UpdateTable({u"nametable"});
    Compare(index, lines);
    return 0;
}
