#include <orvcore/files/WalkTree.h>

#include <algorithm>
#include <vector>

// Depth first, one folder at a time: memory is what one folder holds at each level, not what the tree holds. A folder
// is read to its end before anything in it is visited, because a visitor may remove what it is told of, and what a
// system answers when a folder changes under its reading is not set.

namespace orvcore {

namespace fs = std::filesystem;

namespace {

struct Content {
    std::vector<fs::path> folders;
    std::vector<std::pair<fs::path, FileKind>> others;
};

Content Read(const fs::path& folder, std::error_code& error)
{
    Content content;
    if (!IsUsablePath(folder)) {
        error = std::make_error_code(std::errc::invalid_argument);
        return content;
    }
    const auto take = [&content](const fs::path& path, FileKind kind) {
        if (kind == FileKind::Directory) {
            content.folders.push_back(path);
        } else {
            content.others.emplace_back(path, kind);
        }
        return true;
    };
    ReadDirectory(folder, take, error);
    // All begin with the folder's path, so their texts are in the order of the names.
    std::sort(content.folders.begin(), content.folders.end(),
              [](const fs::path& a, const fs::path& b) { return a.native() < b.native(); });
    std::sort(content.others.begin(), content.others.end(),
              [](const auto& a, const auto& b) { return a.first.native() < b.first.native(); });
    return content;
}

// What could be read of the folder is visited when the visitor says GoOn: a listing shows what there is.
WalkNext Fail(const fs::path& folder, const std::error_code& error, const TreeVisitor& visitor)
{
    if (!visitor.fail) {
        throw fs::filesystem_error("cannot read folder", folder, error);
    }
    return visitor.fail(folder, error);
}

bool WalkInto(const fs::path& folder, const TreeVisitor& visitor)
{
    const WalkNext next = visitor.visit(folder, FileKind::Directory);
    if (next != WalkNext::GoOn) {
        return next == WalkNext::PassOver;
    }
    if (!WalkTree(folder, visitor)) {
        return false;
    }
    if (visitor.leave) {
        visitor.leave(folder);
    }
    return true;
}

} // namespace

// Calls itself for each level. The system's limit on the length of a path bounds them: some 2,000 on Linux.
bool WalkTree(const fs::path& top, const TreeVisitor& visitor)
{
    std::error_code error;
    const Content content = Read(top, error);
    const WalkNext next = error ? Fail(top, error, visitor) : WalkNext::GoOn;
    if (next != WalkNext::GoOn) {
        return next == WalkNext::PassOver;
    }
    return std::all_of(content.folders.begin(), content.folders.end(),
                       [&](const fs::path& folder) { return WalkInto(folder, visitor); }) &&
           std::all_of(content.others.begin(), content.others.end(),
                       [&](const auto& other) { return visitor.visit(other.first, other.second) != WalkNext::End; });
}

} // namespace orvcore
