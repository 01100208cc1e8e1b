#include <orvcore/files/WalkTree.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

// Depth first, one folder at a time: memory is the names that one folder holds at each level, not what the tree holds.
// A folder is read to its end before anything in it is visited, because a visitor may remove what it is told of, and
// what a system answers when a folder changes under its reading is not set.
//
// A list of levels and no function that calls itself: long paths of Windows have room for some 16,000 levels, more than
// a thread's stack bears.

namespace orvcore {

namespace fs = std::filesystem;

namespace {

class TreeWalk {
public:
    explicit TreeWalk(const TreeVisitor& visitor)
        : visitor_(visitor)
    {
    }

    /// False when the visitor ended it.
    bool Run(const fs::path& top)
    {
        if (!Enter(top)) {
            return false;
        }
        while (!levels_.empty()) {
            Level& level = levels_.back();
            const bool goesOn =
                level.next < level.folders.size() ? VisitFolder(level.folders[level.next++]) : VisitOthers(level);
            if (!goesOn) {
                return false;
            }
        }
        return true;
    }

private:
    using Text = fs::path::string_type;

    /// A folder that is being walked. Names and not paths: at each level of a deep tree a path is longer.
    struct Level {
        std::size_t length; ///< of its path, with which path_ begins
        std::vector<Text> folders;
        std::vector<std::pair<Text, FileKind>> others;
        std::size_t next = 0; ///< of folders
    };

    static void Read(const fs::path& folder, Level& level, std::error_code& error)
    {
        if (!IsUsablePath(folder)) {
            error = std::make_error_code(std::errc::invalid_argument);
            return;
        }
        const auto take = [&level](const fs::path& path, FileKind kind) {
            if (kind == FileKind::Directory) {
                level.folders.push_back(path.filename().native());
            } else {
                level.others.emplace_back(path.filename().native(), kind);
            }
            return true;
        };
        ReadDirectory(folder, take, error);
        std::sort(level.folders.begin(), level.folders.end());
        std::sort(level.others.begin(), level.others.end());
    }

    // What could be read of the folder is visited when the visitor says GoOn: a listing shows what there is.
    WalkNext Fail(const fs::path& folder, const std::error_code& error) const
    {
        if (!visitor_.fail) {
            throw fs::filesystem_error("cannot read folder", folder, error);
        }
        return visitor_.fail(folder, error);
    }

    bool Enter(const fs::path& folder)
    {
        Level level{folder.native().size(), {}, {}};
        std::error_code error;
        Read(folder, level, error);
        const WalkNext next = error ? Fail(folder, error) : WalkNext::GoOn;
        if (next == WalkNext::PassOver) { // left at once, as an empty one is
            level.folders.clear();
            level.others.clear();
        }
        path_ = folder.native();
        levels_.push_back(std::move(level));
        return next != WalkNext::End;
    }

    bool VisitFolder(const Text& name)
    {
        const fs::path folder = fs::path(path_) / name;
        const WalkNext next = visitor_.visit(folder, FileKind::Directory);
        return next == WalkNext::GoOn ? Enter(folder) : next == WalkNext::PassOver;
    }

    // The folder's last part: then it is left.
    bool VisitOthers(const Level& level)
    {
        const fs::path folder(path_);
        for (const auto& [name, kind] : level.others) {
            if (visitor_.visit(folder / name, kind) == WalkNext::End) {
                return false;
            }
        }
        levels_.pop_back();
        if (!levels_.empty()) {
            path_.resize(levels_.back().length);
            if (visitor_.leave) {
                visitor_.leave(folder);
            }
        }
        return true;
    }

    const TreeVisitor& visitor_;
    std::vector<Level> levels_;
    Text path_; // of the last level's folder
};

} // namespace

bool WalkTree(const fs::path& top, const TreeVisitor& visitor)
{
    return TreeWalk(visitor).Run(top);
}

} // namespace orvcore
