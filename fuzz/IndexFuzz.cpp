// Any damage to the file of a search index: opening, searching and changing it must neither crash nor hang, and once it
// is cleared the index must find exactly what is inserted then.
#include <fuzz/Patches.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/Paths.h>
#include <orvcore/files/TemporaryFolder.h>
#include <orvmetadatadb/RapidFindDB.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using orvmetadatadb::RapidFindDB;
using Keys = std::vector<std::u16string>;

const std::vector<std::u16string> kTables = {u"nametable"};

const std::filesystem::path& Folder()
{
    static const orvcore::TemporaryFolder folder(u8"orvcapsule-fuzz");
    return folder.Path();
}

bool Start(RapidFindDB& index)
{
    const bool opened = index.Open(orvcore::PathToUTF16(Folder() / "index.db")) >= 0;
    return opened && index.SetSynchronousMode(false) >= 0 && index.UpdateTable(kTables) >= 0;
}

void RemoveFiles()
{
    for (const char* name : {"index.db", "index.db-wal", "index.db-shm", "index.db-journal"}) {
        std::error_code ignored;
        std::filesystem::remove(Folder() / name, ignored);
        std::filesystem::remove(Folder() / (std::string("index.db.damaged") + (name + 8)), ignored);
    }
}

// A file with every kind of change.
std::string MakeFile()
{
    RemoveFiles();
    {
        RapidFindDB index;
        Start(index);
        index.DeleteTable();
        index.UpdateTable(kTables);
        for (int i = 0; i < 100; ++i) {
            const auto number = orvcore::ToUTF16(std::to_string(i));
            index.InsertRow(u"/templates/" + number, {u"Title " + number});
            index.InsertRow(u"/templates/" + number, {u"tag"});
        }
        index.DeleteRow(u"/templates/7");
    }
    return orvcore::ReadWholeFile(Folder() / "index.db");
}

Keys Find(RapidFindDB& index, const char16_t* term)
{
    Keys keys;
    index.Match({{term, kTables, {0}}}, 0, keys);
    return keys;
}

void Use(RapidFindDB& index)
{
    Find(index, u"title");
    std::vector<orvmetadatadb::SimilarItem> items;
    index.GetSimilarList(u"t", 100, kTables, items, 0);
    index.InsertRow(u"/templates/8", {u"new"});
    index.DeleteRow(u"/templates/9");
    Find(index, u"");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string whole = MakeFile();
    const std::string file = fuzz::Patched(whole, data, size);
    RemoveFiles();
    orvcore::WriteBufferToFile(Folder() / "index.db", file.data(), file.size());
    RapidFindDB index;
    if (!Start(index) && index.DeleteTable() < 0) {
        return 0;
    }
    Use(index);
    const bool cleared = index.DeleteTable() >= 0 && index.UpdateTable(kTables) >= 0;
    if (cleared && index.InsertRow(u"/new", {u"New"}) >= 0 && Find(index, u"") != Keys{u"/new"}) {
        std::fprintf(stderr, "a cleared index does not find what was inserted\n");
        std::abort();
    }
    return 0;
}
