#include <tests/orvmetadatadb/IndexFixture.h>

#include <orvcore/text/shared/TextFold.h>
#include <orvmetadatadb/EscapeSequences.h>

#include <map>
#include <random>
#include <set>
#include <thread>

namespace {

using orvmetadatadb::RapidFindDB;
using test::Find;
using test::Similar;
using test::Texts;

class RapidFindDBTest : public test::IndexTest {
protected:
    void SetUp() override
    {
        ASSERT_EQ(Start(index), orvmetadatadb::kSuccess);
    }
    void Insert(const std::u16string& key, const Texts& texts)
    {
        for (const std::u16string& text : texts) {
            ASSERT_GE(index.InsertRow(key, {text}), 0);
        }
    }

    RapidFindDB index;
};

TEST_F(RapidFindDBTest, TermsFindWhatAPersonMeans)
{
    Insert(u"no", {u"Økland", u"Bjørn"});
    Insert(u"pl", {u"Paweł", u"Ścieżka 50%"});
    Insert(u"de", {u"Straße", u"Über_blick"});
    Insert(u"ja", {u"字幕タイトル"});
    Insert(u"ko", {u"자막 제목"});
    Insert(u"wide", {u"ＡＢＣ"});
    Insert(u"marks", {u"a\"b* NEAR(x) -AND- c\\d", u"it's ^{}():"});
    struct Case {
        Texts terms;
        Texts keys;
    };
    const Case cases[] = {
        {{u"okland"}, {u"no"}},
        {{u"ØKLAND"}, {u"no"}},
        {{u"KLAN"}, {u"no"}},
        {{u"pawel"}, {u"pl"}},
        {{u"strasse"}, {u"de"}},
        {{u"abc"}, {u"wide"}},
        {{u"ＡＢ"}, {u"wide"}},
        {{u"字幕"}, {u"ja"}},
        {{u"幕タ"}, {u"ja"}},
        {{u"タイトル"}, {u"ja"}},
        {{u"ﾀｲﾄﾙ"}, {u"ja"}},
        {{u"제목"}, {u"ko"}},
        {{u"목"}, {u"ko"}},
        {{u"b"}, {u"de", u"marks", u"no", u"wide"}},
        {{u"幕字"}, {}},
        {{u"0%"}, {u"pl"}},
        {{u"%"}, {u"pl"}},
        {{u"r_b"}, {u"de"}},
        {{u"\"b*"}, {u"marks"}},
        {{u"*"}, {u"marks"}},
        {{u"near("}, {u"marks"}},
        {{u"-and-"}, {u"marks"}},
        {{u"AND"}, {u"marks", u"no"}},
        {{u"c\\d"}, {u"marks"}},
        {{u"'s ^{}():"}, {u"marks"}},
        {{u"자막 제"}, {u"ko"}},
        {{u" "}, {u"ko", u"marks", u"pl"}},
        {{u"  "}, {}},
        {{u"okland", u"bjorn"}, {u"no"}}, // in two rows of one key
        {{u"okland", u"pawel"}, {}},
        {{u"b", u"s", u"'"}, {u"marks"}},
        {{u"b", u""}, {u"de", u"marks", u"no", u"wide"}},
        {{u"\u0301", u"okland"}, {u"no"}}, // folds to nothing
        {{u""}, {u"de", u"ja", u"ko", u"marks", u"no", u"pl", u"wide"}},
        {{}, {}},
        {{u"klandbj"}, {}}, // not across two rows
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Find(index, c.terms), c.keys) << orvcore::ToNarrow(c.terms.empty() ? u"" : c.terms[0]);
    }
}

TEST_F(RapidFindDBTest, KeysComeBackAsTheyWereGiven)
{
    const Texts keys = {u"/a/b'c \"d\" %20 %s \\n.zelt",
                        u"C:\\Users\\n\\t.zelt",
                        u"\\\\?\\UNC\\x",
                        u"\xD800 lone",
                        u"a*b_c%",
                        u"\uFEFFmark",
                        u"字幕/タイトル.zelt",
                        std::u16string(u"nul\0nul", 7),
                        std::u16string(5000, u'x')};
    for (const std::u16string& key : keys) {
        EXPECT_EQ(orvmetadatadb::FixEscapeSequences(key), key);
        Insert(key, {u"text"});
    }
    const auto sorted = std::set<std::u16string>(keys.begin(), keys.end());
    EXPECT_EQ(Find(index, {u"text"}), Texts(sorted.begin(), sorted.end()));
    RapidFindDB second; // from the file
    index.DeleteRow(u"not there");
    ASSERT_EQ(Start(second), 0);
    Find(index, {u"x"}); // writes what is left of the group
    EXPECT_EQ(Find(second, {u"text"}), Texts(sorted.begin(), sorted.end()));
}

TEST_F(RapidFindDBTest, AKeyOfManyRowsIsASetToo)
{
    constexpr int kRows = 1000;
    const auto insertAll = [this](orvmetadatadb::ResultCode expected) {
        for (int i = 0; i < kRows; ++i) {
            ASSERT_EQ(index.InsertRow(u"many", {u"text " + orvcore::ToUTF16(std::to_string(i))}), expected) << i;
        }
    };
    Insert(u"few", {u"text 1", u"text 999"});
    insertAll(orvmetadatadb::kSuccess);
    insertAll(orvmetadatadb::kRowExists);
    ASSERT_EQ(index.DeleteRow(u"many"), 0);
    EXPECT_EQ(Find(index, {u"text"}), Texts{u"few"});
    Insert(u"more", {u"text 999"});
    insertAll(orvmetadatadb::kSuccess);
    insertAll(orvmetadatadb::kRowExists);
    EXPECT_EQ(Find(index, {u"text 999"}), (Texts{u"few", u"many", u"more"}));
}

// Big answers come from a lasting order of all keys, into which later ones are merged.
TEST_F(RapidFindDBTest, BigAnswersStayInOrderAsRowsCome)
{
    std::set<std::u16string> expected;
    for (int batch = 0; batch < 3; ++batch) {
        for (int i = batch; i < 1500; i += 3) {
            const auto key = orvcore::ToUTF16(std::to_string(i * 7919 % 1500));
            Insert(key, {u"text"});
            expected.insert(key);
        }
        EXPECT_EQ(Find(index, {u"text"}), Texts(expected.begin(), expected.end())) << batch;
    }
}

TEST_F(RapidFindDBTest, CallsThatDoNotFitAreRefused)
{
    Texts keys;
    std::vector<orvmetadatadb::SimilarItem> items;
    RapidFindDB closed;
    EXPECT_EQ(closed.InsertRow(u"k", {u"t"}), orvmetadatadb::kBadCall);
    EXPECT_EQ(closed.UpdateTable(test::kTables), orvmetadatadb::kBadCall);
    EXPECT_EQ(closed.DeleteTable(), orvmetadatadb::kBadCall);
    EXPECT_EQ(index.InsertRow(u"", {u"t"}), orvmetadatadb::kBadCall);
    EXPECT_EQ(index.InsertRow(u"k", {u""}), orvmetadatadb::kBadCall);
    EXPECT_EQ(index.InsertRow(u"k", {}), orvmetadatadb::kBadCall);
    EXPECT_EQ(index.UpdateTable({u"a", u"b"}), orvmetadatadb::kBadCall);
    EXPECT_EQ(index.Match({{u"t", {u"other"}, {0}}}, 0, keys), orvmetadatadb::kBadCall);
    EXPECT_EQ(index.Match({{u"t", test::kTables, {1}}}, 0, keys), orvmetadatadb::kBadCall);
    EXPECT_EQ(index.Match({{u"t", test::kTables, {0}}}, 1, keys), orvmetadatadb::kBadCall);
    EXPECT_EQ(index.GetSimilarList(u"", -1, test::kTables, items, 0), orvmetadatadb::kBadCall);
    EXPECT_EQ(index.GetDBErrorCode(), orvmetadatadb::DBErrorCode::Call);
    EXPECT_EQ(index.DeleteRow(u""), orvmetadatadb::kSuccess); // no key's, and nobody's
    EXPECT_EQ(index.DeleteTable(), orvmetadatadb::kSuccess);
    EXPECT_EQ(index.InsertRow(u"k", {u"t"}), orvmetadatadb::kBadCall); // no table in use
}

TEST_F(RapidFindDBTest, SuggestionsComeClosestFirst)
{
    Insert(u"1", {u"Title", u"Title Card", u"Big Title", u"subtitle", u"titled", u"TITLE", u"Étoile", u"字幕タイトル",
                  u"#tip"});
    Insert(u"2", {u"Title", u"Lower Third"});
    EXPECT_EQ(Similar(index, u"tit"), (Texts{u"TITLE", u"Title", u"titled", u"Title Card", u"Big Title"}));
    EXPECT_EQ(Similar(index, u"Title c"), Texts{u"Title Card"});
    EXPECT_EQ(Similar(index, u"ti", 2), (Texts{u"TITLE", u"Title"}));
    EXPECT_EQ(Similar(index, u"ti", 0), Texts{});
    EXPECT_EQ(Similar(index, u"etoi"), Texts{u"Étoile"});
    EXPECT_EQ(Similar(index, u"タイ"), Texts{u"字幕タイトル"});
    EXPECT_EQ(Similar(index, u"itle"), Texts{});
    EXPECT_EQ(Similar(index, u"tip"), Texts{u"#tip"});
    EXPECT_EQ(Similar(index, u"#"), Texts{u"#tip"});
    EXPECT_EQ(Similar(index, u"", 3), (Texts{u"#tip", u"TITLE", u"Title"}));
    index.DeleteRow(u"1");
    EXPECT_EQ(Similar(index, u"ti"), Texts{u"Title"});
}

// Against looking through every row, while rows come and go.
TEST_F(RapidFindDBTest, AgreesWithANaiveSearch)
{
    const std::u16string letters = u"aAäbßøŁ字幕タｱ한가и й%_*\"\\' \u0301";
    std::mt19937 random(11);
    const auto randomText = [&](std::size_t longest) {
        std::u16string text;
        for (std::size_t length = 1 + random() % longest; length > 0; --length) {
            text += letters[random() % letters.size()];
        }
        return text;
    };
    std::map<std::u16string, std::map<std::u16string, std::u8string>> rows; // folded texts by key and text
    for (int round = 0; round < 4000; ++round) {
        const std::u16string key = u"k" + orvcore::ToUTF16(std::to_string(random() % 300));
        const std::u16string text = randomText(8);
        if (random() % 8 == 0) {
            rows.erase(key);
            ASSERT_EQ(index.DeleteRow(key), 0);
        } else {
            const bool isNew = rows[key].emplace(text, orvcore::FoldText(text)).second;
            ASSERT_EQ(index.InsertRow(key, {text}), isNew ? orvmetadatadb::kSuccess : orvmetadatadb::kRowExists);
        }
        if (round % 4 != 0) {
            continue;
        }
        const Texts terms = {randomText(2), randomText(1)};
        const std::u8string first = orvcore::FoldText(terms[0]);
        const std::u8string second = orvcore::FoldText(terms[1]);
        Texts expected;
        for (const auto& [name, texts] : rows) {
            const auto holds = [&texts = texts](const std::u8string& term) {
                return std::any_of(texts.begin(), texts.end(),
                                   [&](const auto& row) { return row.second.find(term) != std::u8string::npos; });
            };
            if (holds(first) && holds(second)) {
                expected.push_back(name);
            }
        }
        ASSERT_EQ(Find(index, terms), expected) << orvcore::ToNarrow(terms[0] + u" + " + terms[1]);
    }
    RapidFindDB second;
    ASSERT_EQ(Start(second), 0);
    EXPECT_EQ(Find(second, {u"a"}), Find(index, {u"a"}));
    EXPECT_EQ(Similar(second, u""), Similar(index, u""));
}

TEST_F(RapidFindDBTest, OneObjectServesManyThreads)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 300; ++i) {
                const auto key = orvcore::ToUTF16(std::to_string(t) + "/" + std::to_string(i));
                index.InsertRow(key, {u"text " + key});
                if (i % 20 == 0) {
                    Find(index, {u"text", key});
                }
                if (i % 3 == 0) {
                    index.DeleteRow(key);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Find(index, {u"text"}).size(), 4U * 200U);
}

TEST_F(RapidFindDBTest, VeryLongTextsAreSearchedAtTheirBeginning)
{
    Insert(u"long", {std::u16string(4095, u'a') + u"\xD83D\xDE00" + u"end"});
    EXPECT_EQ(Find(index, {u"aaa"}), Texts{u"long"});
    EXPECT_EQ(Find(index, {u"\xFFFD"}), Texts{}); // the pair was not cut in two
    EXPECT_EQ(Find(index, {u"end"}), Texts{});
}

} // namespace
