#pragma once

#include <string>

namespace zelt {

/// Makes sure that a file can be used as a search index, as the library's own functions, for which search is a
/// convenience, do not say: creates it where there is none, unless it `mustExist`.
/// @throws FileError  saying why not; also when the file was damaged and an empty one has taken its place
void CheckIndexFile(const std::string& file, bool mustExist);

/// The search index of the process, for as long as this lives. @throws FileError as CheckIndexFile
class OpenIndex {
public:
    OpenIndex(const std::string& file, bool mustExist);
    OpenIndex(const OpenIndex&) = delete;
    OpenIndex& operator=(const OpenIndex&) = delete;
    ~OpenIndex();
};

} // namespace zelt
