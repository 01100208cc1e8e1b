#include <tests/orvmetadatadb/IndexFixture.h>

#include <orvstorage/SQLiteCodes.h>
#include <tests/support/RunProgram.h>

#include <sqlite3.h>

#include <filesystem>
#include <functional>
#include <future>
#include <thread>

namespace {

using orvmetadatadb::DBErrorCode;
using orvmetadatadb::RapidFindDB;
using test::Find;
using test::Texts;
namespace codes = orvstorage::sqlite;

class RapidFindDBFileTest : public test::IndexTest {
protected:
    void Fill(RapidFindDB& index, int rows) const
    {
        for (int i = 0; i < rows; ++i) {
            const auto number = orvcore::ToUTF16(std::to_string(i));
            ASSERT_EQ(index.InsertRow(u"key" + number, {u"text " + number}), 0);
        }
    }
    /// Makes a file with `rows` rows, closed.
    void MakeFile(int rows) const
    {
        RapidFindDB index;
        ASSERT_EQ(Start(index), 0);
        Fill(index, rows);
    }
    using Other = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
    /// Another program's connection to the file, on which `sql` has run.
    Other Sql(const char* sql) const
    {
        sqlite3* database = nullptr;
        EXPECT_EQ(sqlite3_open((folder / "index.db").string().c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
        return {database, &sqlite3_close};
    }
    std::string FileBytes() const
    {
        return folder.Read("index.db");
    }
    void WriteBytes(const std::string& bytes) const
    {
        folder.Write("index.db", bytes);
    }
    bool IsSetAside() const
    {
        return std::filesystem::exists(folder / "index.db.damaged");
    }
};

TEST_F(RapidFindDBFileTest, TwoObjectsSeeEachOthersGroups)
{
    RapidFindDB one;
    RapidFindDB two;
    ASSERT_EQ(Start(one), 0);
    ASSERT_EQ(Start(two), 0);
    Fill(one, 64); // a whole group
    EXPECT_EQ(Find(two, {u"text"}).size(), 64U);
    ASSERT_EQ(two.InsertRow(u"other", {u"text of two"}), 0);
    Find(two, {u"x"});
    EXPECT_EQ(Find(one, {u"of two"}), Texts{u"other"});
    ASSERT_EQ(one.InsertRow(u"pending", {u"text pending"}), 0); // not yet written when the other deletes
    ASSERT_EQ(two.DeleteRow(u"key7"), 0);
    Find(two, {u"x"});
    EXPECT_EQ(Find(one, {u"text 7"}), Texts{});
    EXPECT_EQ(Find(one, {u"pending"}), Texts{u"pending"});
    EXPECT_EQ(Find(two, {u"pending"}), Texts{u"pending"});
    ASSERT_EQ(one.InsertRow(u"late", {u"text late"}), 0);
    ASSERT_EQ(two.DeleteTable(), 0);
    EXPECT_EQ(Find(one, {u"text"}), Texts{u"late"});
}

// `one` deletes what it has not read yet, or writes after another object's numbers have come free.
TEST_F(RapidFindDBFileTest, ADeletionReachesWhatAnotherObjectWrote)
{
    const auto insert = [](RapidFindDB& index, const char16_t* key, const char16_t* text) {
        EXPECT_EQ(index.InsertRow(key, {text}), 0) << orvcore::ToNarrow(orvcore::ToUTF8(text));
    };
    const auto save = [](RapidFindDB& index) { Find(index, {u"saves what is pending"}); };
    using Step = std::function<void(RapidFindDB & one, RapidFindDB & two)>;
    const struct {
        const char* name;
        Step step;
        Texts found; ///< by "text"
    } cases[] = {
        {"a key that is new to the one that deletes",
         [&](RapidFindDB& one, RapidFindDB& two) {
             insert(two, u"new", u"text old");
             save(two);
             EXPECT_EQ(one.DeleteRow(u"new"), 0);
         },
         {u"a", u"b"}},
        {"one that is new and comes again with a row of before",
         [&](RapidFindDB& one, RapidFindDB& two) {
             insert(two, u"new", u"text old");
             insert(two, u"new", u"same");
             save(two);
             EXPECT_EQ(one.DeleteRow(u"new"), 0);
             insert(one, u"new", u"same");
             EXPECT_EQ(Find(one, {u"same"}), Texts{u"new"});
         },
         {u"a", u"b"}},
        {"rows that came while the deletion was pending",
         [&](RapidFindDB& one, RapidFindDB& two) {
             EXPECT_EQ(one.DeleteRow(u"b"), 0);
             insert(two, u"b", u"text more");
             save(two);
         },
         {u"a"}},
        {"a deletion pending while the other reads everything again",
         [&](RapidFindDB& one, RapidFindDB& two) {
             EXPECT_EQ(one.DeleteRow(u"b"), 0);
             insert(one, u"c", u"text pending");
             EXPECT_EQ(two.DeleteRow(u"a"), 0);
             save(two);
         },
         {u"c"}},
        {"a row that the other has deleted comes again",
         [&](RapidFindDB& one, RapidFindDB& two) {
             EXPECT_EQ(two.DeleteRow(u"a"), 0);
             save(two);
             insert(one, u"a", u"text");
             EXPECT_EQ(one.InsertRow(u"b", {u"text"}), orvmetadatadb::kRowExists);
         },
         {u"a", u"b"}},
        {"numbers that come free are given again",
         [&](RapidFindDB& one, RapidFindDB& two) {
             EXPECT_EQ(one.DeleteRow(u"b"), 0);
             save(one);
             insert(two, u"c", u"text in b's place");
             save(two);
             EXPECT_EQ(one.DeleteRow(u"c"), 0);
             insert(one, u"d", u"other");
             save(one);
             insert(two, u"d", u"text of d");
             save(two);
         },
         {u"a", u"d"}},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        RapidFindDB one;
        RapidFindDB two;
        ASSERT_EQ(Start(one), 0);
        ASSERT_EQ(one.DeleteTable(), 0);
        ASSERT_EQ(one.UpdateTable(test::kTables), 0);
        ASSERT_EQ(Start(two), 0);
        insert(one, u"a", u"text");
        insert(one, u"b", u"text");
        save(one);
        save(two);
        test.step(one, two);
        EXPECT_EQ(Find(one, {u"text"}), test.found);
        EXPECT_EQ(Find(two, {u"text"}), test.found);
        RapidFindDB reader;
        ASSERT_EQ(Start(reader), 0);
        EXPECT_EQ(Find(reader, {u"text"}), test.found);
    }
}

TEST_F(RapidFindDBFileTest, TwoProcessesWriteOneFile)
{
    RapidFindDB index;
    ASSERT_EQ(Start(index), 0);
    auto other = std::async(std::launch::async, [&] {
        return orvtest::RunProgram(ORV_INDEX_WRITER, {orvcore::ToNarrow(File()), "other", "3000"});
    });
    Fill(index, 3000);
    EXPECT_EQ(other.get(), 0);
    EXPECT_EQ(Find(index, {u"text"}).size(), 3000U);
    EXPECT_EQ(Find(index, {u"other"}).size(), 3000U);
    RapidFindDB reader;
    ASSERT_EQ(Start(reader), 0);
    EXPECT_EQ(Find(reader, {u""}).size(), 6000U);
}

TEST_F(RapidFindDBFileTest, AnIndexDamagedAtItsHeadIsSetAsideOnOpening)
{
    MakeFile(500);
    const std::string whole = FileBytes();
    ASSERT_GT(whole.size(), 12288U);
    std::string noMagic = whole;
    noMagic.replace(0, 16, "0123456789abcdef");
    std::string brokenSchema = whole;
    brokenSchema.replace(100, 3900, 3900, '\xA5');
    std::string otherVersion = whole;
    otherVersion[63] = 9; // the number of the format
    const std::string contents[] = {noMagic, brokenSchema, otherVersion, whole.substr(0, 60), std::string(8192, '\0')};
    for (const std::string& content : contents) {
        std::filesystem::remove(folder / "index.db.damaged");
        WriteBytes(content);
        RapidFindDB index;
        ASSERT_EQ(Start(index), 0) << content.size();
        EXPECT_EQ(folder.Read("index.db.damaged"), content);
        EXPECT_EQ(Find(index, {u""}), Texts{});
        Fill(index, 70);
        EXPECT_EQ(Find(index, {u"text 69"}), Texts{u"key69"});
    }
}

TEST_F(RapidFindDBFileTest, AnIndexDamagedInsideFailsUntilTheTableIsDeleted)
{
    MakeFile(5000);
    std::string bytes = FileBytes();
    for (std::size_t page = 6; page * 4096 < bytes.size(); ++page) {
        bytes.replace(page * 4096, 64, 64, '\xA5');
    }
    WriteBytes(bytes);
    RapidFindDB index;
    ASSERT_EQ(Start(index), 0);
    EXPECT_EQ(Find(index, {u"text"}), Texts{u"(failed)"});
    EXPECT_EQ(index.GetDBErrorCode(), DBErrorCode::Storage);
    EXPECT_EQ(index.GetSQLiteErrorCode(), codes::kCorrupt);
    EXPECT_EQ(index.InsertRow(u"k", {u"t"}), orvmetadatadb::kStorageFailed);
    EXPECT_EQ(FileBytes(), bytes); // nothing is rebuilt behind the caller's back
    ASSERT_EQ(index.DeleteTable(), 0);
    ASSERT_EQ(index.UpdateTable(test::kTables), 0);
    EXPECT_TRUE(IsSetAside());
    Fill(index, 70);
    EXPECT_EQ(Find(index, {u"text 69"}), Texts{u"key69"});
}

TEST_F(RapidFindDBFileTest, AnyBrokenByteIsSurvived)
{
    MakeFile(300);
    const std::string whole = FileBytes();
    for (std::size_t at = 0; at < whole.size(); at += 211) {
        std::filesystem::remove(folder / "index.db-wal");
        std::string bytes = whole;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x5A);
        WriteBytes(bytes);
        RapidFindDB index;
        if (Start(index) >= 0) {
            Find(index, {u"text"});
            index.InsertRow(u"k", {u"new"});
            index.DeleteRow(u"key5");
            Find(index, {u"new"});
            ASSERT_EQ(index.DeleteTable(), 0) << at;
            ASSERT_EQ(index.UpdateTable(test::kTables), 0) << at;
            ASSERT_EQ(index.InsertRow(u"k", {u"new"}), 0) << at;
            ASSERT_EQ(Find(index, {u"new"}), Texts{u"k"}) << at;
        }
    }
}

TEST_F(RapidFindDBFileTest, FilesOfOthersAreLeftAlone)
{
    const std::string project = "<project>" + std::string(4000, ' ') + "</project>";
    WriteBytes(project);
    RapidFindDB index;
    EXPECT_EQ(index.Open(File()), orvmetadatadb::kStorageFailed);
    EXPECT_EQ(index.GetSQLiteErrorCode(), codes::kNotADatabase);
    EXPECT_EQ(FileBytes(), project);

    std::filesystem::remove(folder / "index.db");
    Sql("CREATE TABLE notes(text); INSERT INTO notes VALUES('mine')");
    const std::string notes = FileBytes();
    EXPECT_EQ(index.Open(File()), orvmetadatadb::kStorageFailed);
    EXPECT_EQ(index.UpdateTable(test::kTables), orvmetadatadb::kBadCall);
    EXPECT_EQ(FileBytes(), notes);

    EXPECT_EQ(index.Open(orvcore::PathToUTF16(folder.Path())), orvmetadatadb::kStorageFailed); // a folder
    EXPECT_EQ(index.Open(orvcore::PathToUTF16(folder / "none" / "index.db")), orvmetadatadb::kStorageFailed);
    EXPECT_EQ(index.GetSQLiteErrorCode(), codes::kCannotOpen);
    EXPECT_EQ(index.Open(u""), orvmetadatadb::kStorageFailed);
    EXPECT_FALSE(IsSetAside());
}

TEST_F(RapidFindDBFileTest, AFileLockedElsewhereKeepsRowsInMemory)
{
    RapidFindDB index;
    ASSERT_EQ(Start(index), 0);
    Fill(index, 64);
    Other other = Sql("BEGIN IMMEDIATE");
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(index.InsertRow(u"more" + orvcore::ToUTF16(std::to_string(i)), {u"waiting"}), 0);
    }
    EXPECT_EQ(Find(index, {u"waiting"}).size(), 200U);
    RapidFindDB second;
    EXPECT_EQ(Start(second), 0); // reading goes on beside a writer
    EXPECT_EQ(Find(second, {u"text"}).size(), 64U);
    other.reset();
    Find(index, {u"x"});
    EXPECT_EQ(Find(second, {u"waiting"}).size(), 200U);
    other = Sql("BEGIN IMMEDIATE");
    ASSERT_EQ(index.InsertRow(u"lost", {u"text"}), 0);
    ASSERT_EQ(index.DeleteTable(), 0); // waits too
    ASSERT_EQ(index.DeleteTable(), 0);
    ASSERT_EQ(index.UpdateTable(test::kTables), 0);
    ASSERT_EQ(index.InsertRow(u"after", {u"text"}), 0);
    EXPECT_EQ(Find(index, {u""}), Texts{u"after"});
    other.reset();
    Find(index, {u"x"});
    EXPECT_EQ(Find(second, {u""}), Texts{u"after"});
}

// In a file without a write-ahead log a reader lets a group be written and refuses its end.
TEST_F(RapidFindDBFileTest, AGroupThatFailsAtItsEndIsWrittenLater)
{
    MakeFile(1);
    Sql("PRAGMA journal_mode=DELETE");
    Other reader = Sql("BEGIN; SELECT * FROM nametable");
    RapidFindDB index;
    ASSERT_EQ(Start(index), 0);
    for (int i = 0; i < 64; ++i) {
        ASSERT_EQ(index.InsertRow(u"k" + orvcore::ToUTF16(std::to_string(i / 2)), {i % 2 == 0 ? u"late a" : u"late b"}),
                  0);
    }
    RapidFindDB second;
    EXPECT_EQ(Start(second), 0);
    EXPECT_EQ(Find(second, {u"late"}), Texts{});
    reader.reset();
    ASSERT_EQ(second.InsertRow(u"other", {u"late d"}), 0); // takes the numbers that the group gave back
    EXPECT_EQ(Find(second, {u"late"}), Texts{u"other"});
    ASSERT_EQ(index.InsertRow(u"k0", {u"late c"}), 0);
    EXPECT_EQ(Find(index, {u"late"}).size(), 33U);
    EXPECT_EQ(Find(second, {u"late"}), Find(index, {u"late"}));
    EXPECT_EQ(Find(second, {u"late c"}), Texts{u"k0"});
}

// What another program put into the schema of the file gets no more rights than the file itself.
TEST_F(RapidFindDBFileTest, AnUntrustedSchemaDoesNotRun)
{
    const char* const schemas[] = {
        "CREATE VIRTUAL TABLE words USING fts5(x);"
        "CREATE TRIGGER t AFTER INSERT ON nametable BEGIN INSERT INTO words_content VALUES(5,'x'); END",
        "CREATE TRIGGER t AFTER INSERT ON nametable BEGIN SELECT count(*) FROM pragma_table_list; END",
    };
    for (const char* schema : schemas) {
        MakeFile(1);
        Sql(schema);
        RapidFindDB index;
        EXPECT_EQ(Start(index), orvmetadatadb::kStorageFailed) << schema;
        index.Open(u":memory:");
        std::filesystem::remove(folder / "index.db");
    }
}

TEST_F(RapidFindDBFileTest, AListOfManyChangesIsWrittenAnew)
{
    RapidFindDB index;
    RapidFindDB second;
    ASSERT_EQ(Start(index), 0);
    ASSERT_EQ(Start(second), 0);
    Fill(index, 100);
    Find(second, {u"text"});
    for (int i = 0; i < 33000; ++i) {
        ASSERT_EQ(index.DeleteRow(u"key7"), 0);
        ASSERT_EQ(index.InsertRow(u"key7", {u"text 7"}), 0);
    }
    Sql("CREATE TABLE few(n CHECK(n < 2000)); INSERT INTO few SELECT count(*) FROM nametable; DROP TABLE few");
    ASSERT_EQ(index.DeleteRow(u"key8"), 0);
    EXPECT_EQ(Find(index, {u"text"}).size(), 99U);
    EXPECT_EQ(Find(second, {u"text"}), Find(index, {u"text"}));
    RapidFindDB reader;
    ASSERT_EQ(Start(reader), 0);
    EXPECT_EQ(Find(reader, {u"text"}), Find(index, {u"text"}));
}

TEST_F(RapidFindDBFileTest, AFullFileRefusesRowsAndSearchesOn)
{
    RapidFindDB index;
    ASSERT_EQ(Start(index), 0);
    Fill(index, 64);
    // The nearest to a full disk that needs no disk: a trigger that fails every write.
    Sql("CREATE TRIGGER full BEFORE INSERT ON nametable BEGIN SELECT RAISE(ABORT,'full'); END");
    int failures = 0;
    for (int i = 0; i < 100; ++i) {
        failures += index.InsertRow(u"more" + orvcore::ToUTF16(std::to_string(i)), {u"waiting"}) < 0 ? 1 : 0;
    }
    EXPECT_EQ(failures, 37); // the 64th, which completes the group, and all after it
    EXPECT_EQ(index.GetDBErrorCode(), DBErrorCode::Storage);
    EXPECT_EQ(Find(index, {u"text"}).size(), 64U);
    EXPECT_EQ(index.DeleteTable(), orvmetadatadb::kStorageFailed);
    ASSERT_EQ(index.UpdateTable(test::kTables), 0);
    EXPECT_EQ(Find(index, {u"text"}), Texts{}); // though the file has them still
    Sql("DROP TRIGGER full");
    RapidFindDB second;
    ASSERT_EQ(Start(second), 0);
    EXPECT_EQ(Find(second, {u"text"}).size(), 64U);
    ASSERT_EQ(index.DeleteTable(), 0);
    EXPECT_EQ(Find(second, {u"text"}), Texts{});
    ASSERT_EQ(index.UpdateTable(test::kTables), 0);
    Fill(index, 64);
    EXPECT_EQ(Find(index, {u"text"}).size(), 64U);
}

TEST_F(RapidFindDBFileTest, TheProgressHandlerEndsALongLoad)
{
    MakeFile(3000);
    RapidFindDB index;
    ASSERT_EQ(Start(index), 0);
    int asked = 0;
    const auto stopAtThird = [](void* context) { return ++*static_cast<int*>(context) == 3 ? 1 : 0; };
    index.RegisterSQLiteProgressHandler(100, stopAtThird, &asked);
    EXPECT_EQ(Find(index, {u"text"}), Texts{u"(failed)"});
    EXPECT_EQ(index.GetSQLiteErrorCode(), codes::kInterrupted);
    EXPECT_EQ(Find(index, {u"text"}).size(), 3000U); // the next one starts over
    RapidFindDB second;
    ASSERT_EQ(Start(second), 0);
    second.RegisterSQLiteProgressHandler(100, nullptr, nullptr);
    second.Interrupt();
    EXPECT_EQ(Find(second, {u"text"}), Texts{u"(failed)"});
}

// At whatever step a host says no, and keeps saying it.
TEST_F(RapidFindDBFileTest, AnInterruptedWriteIsDoneLater)
{
    RapidFindDB index;
    RapidFindDB second;
    ASSERT_EQ(Start(index), 0);
    ASSERT_EQ(Start(second), 0);
    int left = 0;
    const auto stopAtLast = [](void* context) { return --*static_cast<int*>(context) <= 0 ? 1 : 0; };
    std::size_t rows = 0;
    const auto failures = [&] { // of the last 64 rows, a whole group
        int failed = 0;
        for (std::size_t row = rows - 64; row < rows; ++row) {
            const auto result = index.InsertRow(orvcore::ToUTF16(std::to_string(row)), {u"text"});
            failed += result == 0 || result == orvmetadatadb::kRowExists ? 0 : 1;
        }
        return failed;
    };
    bool isInterrupted = true;
    for (int steps = 1; isInterrupted; steps += 1 + steps / 8) {
        rows += 64;
        left = steps;
        index.RegisterSQLiteProgressHandler(1, stopAtLast, &left);
        isInterrupted = failures() > 0;
        isInterrupted = Find(index, {u"text"}) == Texts{u"(failed)"} || isInterrupted;
        EXPECT_EQ(index.GetSQLiteErrorCode(), codes::kInterrupted);
        index.RegisterSQLiteProgressHandler(0, nullptr, nullptr);
        ASSERT_EQ(failures(), 0) << steps;
        ASSERT_EQ(Find(index, {u"text"}).size(), rows) << steps;
        ASSERT_EQ(Find(second, {u"text"}).size(), rows) << steps;
    }
}

} // namespace
