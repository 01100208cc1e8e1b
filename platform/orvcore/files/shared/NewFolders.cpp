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
    fs::path at = WithoutClosingSeparators(folder); // a closing slash would make the folder its own parent
    FileKind kind = FileKind::Directory;
    // Upwards to the first that is there. A link to a folder counts as the folder; a link that leads nowhere counts as
    // missing, and making it fails below.
    for (; !at.empty() && at != at.parent_path(); at = at.parent_path()) {
        // An error (no rights to look) ends this: nothing is made above what cannot be seen.
        kind = InspectTarget(at, error).kind;
        if (kind != FileKind::Nothing || error) {
            break;
        }
        missing.push_back(at);
    }
    if (!error && kind != FileKind::Directory && kind != FileKind::Nothing) { // not each system says so of its own
        error = std::make_error_code(std::errc::not_a_directory);
    }
    for (; !missing.empty() && !error; missing.pop_back()) {
        // Only what this call made is noted. One that another program made between the look above and here is not ours
        // to remove.
        if (MakeDirectory(missing.back(), error)) {
            made_.push_back(missing.back());
        }
    }
    return !error;
}

} // namespace orvcore::detail
