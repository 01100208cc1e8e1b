// index_writer FILE NAME COUNT: adds COUNT rows (NAME/i, "NAME i") to the index in FILE, as another host would.
#include <orvmetadatadb/RapidFindDB.h>

#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    if (argc != 4) {
        return 2;
    }
    orvmetadatadb::RapidFindDB index;
    if (index.Open(orvcore::ToUTF16(std::string_view(argv[1]))) < 0 || index.UpdateTable({u"nametable"}) < 0) {
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
    return 0;
}
