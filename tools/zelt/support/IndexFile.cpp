#include <tools/zelt/support/IndexFile.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/Paths.h>
#include <orvmetadatadb/RapidFindDB.h>
#include <orvstorage/SQLiteCodes.h>
#include <sources/SearchIndex.h>

#include <optional>

namespace zelt {

namespace {

namespace sqlite = orvstorage::sqlite;

std::string Reason(int code)
{
    switch (code) {
    case sqlite::kBusy:
        return "another program has locked it";
    case sqlite::kReadOnly:
        return "it cannot be written";
    case sqlite::kIOError:
        return "it cannot be read or written";
    case sqlite::kCorrupt:
        return "it is damaged";
    case sqlite::kFull:
        return "no space is left on the disk";
    case sqlite::kCannotOpen:
        return "it cannot be opened or made";
    case sqlite::kNotADatabase:
        return "it is not a search index";
    default:
        return "it cannot be used as a search index (SQLite's code " + std::to_string(code) + ')';
    }
}

// Tells whether another file has come to stand at a path.
std::optional<std::filesystem::file_time_type> TimeOf(const std::filesystem::path& path)
{
    std::error_code failed;
    const auto time = std::filesystem::last_write_time(orvcore::ToSystemPath(path), failed);
    return failed ? std::nullopt : std::optional(time);
}

} // namespace

void CheckIndexFile(const std::string& file, bool mustExist)
{
    if (mustExist && !orvcore::Exists(ToPath(file))) {
        throw FileError(file, "there is no such file");
    }
    const std::filesystem::path aside = ToPath(file + ".damaged");
    // The library sets a damaged file aside without a word, because search is a convenience to a host. To somebody who
    // named the file it is not, so the change of the ".damaged" file tells.
    const auto before = TimeOf(aside);
    orvmetadatadb::RapidFindDB index;
    if (index.Open(orvcore::PathToUTF16(ToPath(file))) < 0) {
        throw FileError(file, Reason(index.GetSQLiteErrorCode()));
    }
    if (TimeOf(aside) != before) {
        throw FileError(file, "it was damaged; it is kept as " + file + ".damaged, and an empty one has its place");
    }
}

OpenIndex::OpenIndex(const std::string& file, bool mustExist)
{
    CheckIndexFile(file, mustExist);
    orvcapsule::InitializeRapidFindDB(orvcore::PathToUTF16(ToPath(file)));
}

OpenIndex::~OpenIndex()
{
    orvcapsule::TerminateRapidFindDB();
}

} // namespace zelt
