// index_writer FILE NAME COUNT: adds COUNT rows (NAME/i, "NAME i") to the index in FILE, as another host would.
#include <orvmetadatadb/RapidFindDB.h>

#include <chrono>
#include <cstdlib>
#include <string>

namespace {

// Until another reader of the file finds all rows: the last ones wait while another process writes.
bool AreAllWritten(orvmetadatadb::RapidFindDB& index, const orvcore::UTF16String& path,
                   const orvcore::UTF16String& name, std::size_t count)
{
    const std::vector<orvmetadatadb::MatchCondition> condition = {
        {name, {u"nametable"}, {orvmetadatadb::MatchCondition::kContains}}};
    orvmetadatadb::RapidFindDB reader;
    reader.Open(path);
    reader.UpdateTable({u"nametable"});
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    std::vector<orvcore::UTF16String> found;
    while (found.size() != count && std::chrono::steady_clock::now() < end) {
        index.Match(condition, orvmetadatadb::kMatchAll, found); // writes what is pending, if it can
        reader.Match(condition, orvmetadatadb::kMatchAll, found);
    }
    return found.size() == count;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        return 2;
    }
    orvmetadatadb::RapidFindDB index;
    const orvcore::UTF16String path = orvcore::ToUTF16(std::string_view(argv[1]));
    if (index.Open(path) < 0 || index.UpdateTable({u"nametable"}) < 0) {
        return 1;
    }
    const std::string name = argv[2];
    const int count = std::atoi(argv[3]);
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        if (index.InsertRow(orvcore::ToUTF16(name + "/" + number), {orvcore::ToUTF16(name + " " + number)}) != 0) {
            return 1;
        }
    }
    return AreAllWritten(index, path, orvcore::ToUTF16(name), static_cast<std::size_t>(count)) ? 0 : 1;
}
