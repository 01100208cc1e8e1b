// The search index over made-up templates: how fast rows go in and how long searches and suggestions take, each beside
// bare FTS5 in the same run. Usage: search_bench [templates]
#include <bench/SearchBenchData.h>
#include <bench/SearchBenchFloor.h>

#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/text/Strings.h>
#include <orvmetadatadb/EscapeSequences.h>
#include <orvmetadatadb/RapidFindDB.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <set>

namespace {

using bench::FullTextFloor;
using bench::Template;
using orvmetadatadb::RapidFindDB;
using Clock = std::chrono::steady_clock;

const std::vector<std::u16string> kTables = {u"nametable"};

double Since(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

struct Times {
    double median = 0;
    double p99 = 0;
    std::size_t found = 0;
};

template <class Operation>
Times Measure(int runs, Operation&& operation)
{
    std::vector<double> times;
    Times result;
    for (int i = 0; i < runs; ++i) {
        const auto start = Clock::now();
        result.found = operation();
        times.push_back(Since(start) * 1000);
    }
    std::sort(times.begin(), times.end());
    result.median = times[times.size() / 2];
    result.p99 = times[times.size() * 99 / 100];
    return result;
}

std::vector<orvmetadatadb::MatchCondition> Conditions(const std::vector<std::u8string>& terms)
{
    std::vector<orvmetadatadb::MatchCondition> conditions;
    for (const std::u8string& term : terms) {
        conditions.push_back({orvcore::ToUTF16(term), kTables, {0}});
    }
    return conditions;
}

double InsertAll(RapidFindDB& index, const std::vector<Template>& templates)
{
    const auto start = Clock::now();
    for (const Template& each : templates) {
        for (const std::u8string& text : each.texts) {
            // As the library's own insert does it: both texts arrive as UTF-8.
            index.InsertRow(orvmetadatadb::FixEscapeSequences(orvcore::ToUTF16(each.path)), {orvcore::ToUTF16(text)});
        }
    }
    return Since(start);
}

void PrintFloor(const char* name, const std::optional<Times>& floor, double ours)
{
    if (floor) {
        std::printf("   %s %7.2f ms (x%.2f, %zu)", name, floor->median, ours / floor->median, floor->found);
    } else {
        std::printf("   %s cannot", name);
    }
}

std::optional<Times> MeasureFloor(FullTextFloor& floor, const std::vector<std::u8string>& terms)
{
    if (!floor.Match(terms)) {
        return std::nullopt;
    }
    return Measure(5, [&] { return floor.Match(terms)->size(); });
}

struct Floors {
    FullTextFloor& words;
    FullTextFloor& trigrams;
    FullTextFloor& bigrams;
};

void Search(RapidFindDB& index, Floors& floors, const char* name, const std::vector<std::u8string>& terms)
{
    std::vector<std::u16string> keys;
    const auto conditions = Conditions(terms);
    const Times match = Measure(200, [&] {
        index.Match(conditions, 0, keys);
        return keys.size();
    });
    const Times withSet = Measure(50, [&] {
        std::vector<std::u16string> found;
        index.Match(conditions, 0, found);
        std::set<std::u16string> set;
        for (std::u16string& key : found) {
            set.insert(set.end(), std::move(key));
        }
        return set.size();
    });
    std::printf("%-22s %6zu found  p50 %6.2f  p99 %6.2f ms  with set p50 %6.2f ms |", name, match.found, match.median,
                match.p99, withSet.median);
    PrintFloor("words", MeasureFloor(floors.words, terms), match.median);
    PrintFloor("trigram", MeasureFloor(floors.trigrams, terms), match.median);
    PrintFloor("bigram", MeasureFloor(floors.bigrams, terms), match.median);
    std::printf("\n");
}

void Suggest(RapidFindDB& index, const char* name, const std::u16string& start)
{
    std::vector<orvmetadatadb::SimilarItem> items;
    const Times times = Measure(200, [&] {
        index.GetSimilarList(start, 100, kTables, items, 0);
        return items.size();
    });
    std::printf("%-22s %6zu found  p50 %6.2f  p99 %6.2f ms\n", name, times.found, times.median, times.p99);
}

void OpenIndex(RapidFindDB& index, const std::filesystem::path& folder)
{
    index.Open((folder / "index.db").u16string());
    index.SetSynchronousMode(false);
    index.RegisterSQLiteProgressHandler(50000, nullptr, nullptr);
    index.UpdateTable(kTables);
}

void Run(const std::filesystem::path& folder, std::size_t count)
{
    const auto templates = bench::MakeTemplates(count);
    const double rows = static_cast<double>(count * 5);
    RapidFindDB index;
    OpenIndex(index, folder);
    const double ours = InsertAll(index, templates);
    FullTextFloor words((folder / "words.db").string(), FullTextFloor::Tokenizer::Words);
    FullTextFloor trigrams((folder / "trigrams.db").string(), FullTextFloor::Tokenizer::Trigrams);
    FullTextFloor bigrams((folder / "bigrams.db").string(), FullTextFloor::Tokenizer::Bigrams);
    const double floor = words.Insert(templates);
    std::printf("insert: %.0f rows/s; bare FTS5 words %.0f rows/s (x%.2f of its time)", rows / ours, rows / floor,
                ours / floor);
    std::printf(", trigram %.0f rows/s", rows / trigrams.Insert(templates));
    std::printf(", bigram %.0f rows/s\n", rows / bigrams.Insert(templates));
    Floors floors{words, trigrams, bigrams};
    const auto first = Clock::now();
    std::vector<std::u16string> keys;
    index.Match(Conditions({u8"e"}), 0, keys);
    std::printf("first search with a big answer after the inserts: %.1f ms\n", Since(first) * 1000);
    Search(index, floors, "one term", {u8"countdown"});
    Search(index, floors, "one term, rare", {u8"glowste"});
    Search(index, floors, "accents", {u8"okland"});
    Search(index, floors, "two terms", {u8"title", u8"bar"});
    Search(index, floors, "one letter", {u8"e"});
    Search(index, floors, "two letters", {u8"er"});
    Search(index, floors, "two CJK letters", {u8"背景"});
    Search(index, floors, "one digit", {u8"7"});
    Search(index, floors, "a miss", {u8"qqzxv"});
    Suggest(index, "tags: nothing typed", u"");
    Suggest(index, "tags: one letter", u"t");
    Suggest(index, "tags: three letters", u"tit");
    Suggest(index, "tags: one CJK letter", u"字");
    Suggest(index, "tags: a miss", u"qqzxv");
    RapidFindDB second;
    const auto opening = Clock::now();
    OpenIndex(second, folder);
    second.Match(Conditions({u8"countdown"}), 0, keys);
    std::printf("a second host opens the file and searches: %.0f ms, %zu found; file %.1f MB\n", Since(opening) * 1000,
                keys.size(), static_cast<double>(std::filesystem::file_size(folder / "index.db")) / 1e6);
    const auto clearing = Clock::now();
    index.DeleteTable();
    std::printf("clear: %.1f ms\n", Since(clearing) * 1000);
}

} // namespace

int main(int argc, char** argv)
{
    const std::size_t count = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 100000;
    const orvcore::TemporaryFolder folder(u8"orvcapsule-bench");
    Run(folder.Path(), count);
    return 0;
}
