#include <orvcore/files/shared/NewFolders.h>

#include <orvcore/files/FileSystem.h>

#include <algorithm>

namespace orvcore::detail {

namespace fs = std::filesystem;

NewFolders::~NewFolders()
{
    // Folders may hold by now what others have put there; removing one by one fails on those and leaves them.
    std::error_code ignored;
    std::for_each(made_.rbegin(), made_.rend(), [&](const fs::path& path) { RemoveOne(path, ignored); });
}

bool NewFolders::Make(const fs::path& folder, std::error_code& error)
{
    error.clear();
    std::vector<fs::path> missing;
    for (fs::path at = WithoutClosingSeparators(folder); // a closing slash would make the folder its own parent
         !at.empty() && InspectTarget(at, error).kind == FileKind::Nothing && !error && at != at.parent_path();
         at = at.parent_path()) {
        missing.push_back(at);
    }
    for (; !missing.empty() && !error; missing.pop_back()) {
        if (MakeDirectory(missing.back(), error)) {
            made_.push_back(missing.back());
        }
    }
    if (!error && InspectTarget(folder, error).kind != FileKind::Directory && !error) {
        error = std::make_error_code(std::errc::not_a_directory);
    }
    return !error;
}

} // namespace orvcore::detail
