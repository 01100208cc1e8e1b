#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/text/Guid.h>

#include <optional>
#include <string_view>
#include <vector>

// The names of files in the making. Each has an identifier of its own, so two programs that write the same target do
// not meet before their renames, and nothing needs a lock until then. The dot hides them, the pattern marks them as
// left behind once they are old: packing, watching and measuring pass over them.

namespace orvcore {

namespace fs = std::filesystem;

namespace {

// FileLockWindows.cpp writes such a name out, and docs/decisions/atomic-packages.md tells it: keep the three in step.
constexpr std::u8string_view kPrefix = u8".orv-";
constexpr std::u8string_view kSuffix = u8".part";

} // namespace

fs::path PrivateSibling(const fs::path& path)
{
    UTF8String name(kPrefix);
    name += AsUTF8(Guid::Create().ToString());
    name += kSuffix;
    return path.parent_path() / PathFromUTF8(name);
}

// By the whole pattern and not by its beginning: what is taken for private is left out of packages and deleted in time.
bool IsPrivateName(const fs::path& fileName)
{
    const UTF8String name = PathToUTF8(fileName);
    const std::u8string_view view = name;
    if (!view.starts_with(kPrefix) || !view.ends_with(kSuffix) || view.size() <= kPrefix.size() + kSuffix.size()) {
        return false;
    }
    const auto middle = AsNarrow(view.substr(kPrefix.size(), view.size() - kPrefix.size() - kSuffix.size()));
    const std::optional<Guid> guid = Guid::FromString(middle);
    return guid && guid->ToString() == middle; // in no other spelling: that would be another's file
}

void RemoveLeftBehind(const fs::path& folder, std::chrono::hours age) noexcept
{
    try {
        const FileTime oldest = std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now()) - age;
        std::vector<fs::path> leftBehind; // removed when all is read: a folder that changes may be read wrong
        const auto collect = [&](const fs::path& path, FileKind kind) {
            std::error_code error;
            if ((kind == FileKind::File || kind == FileKind::Directory) && IsPrivateName(path.filename()) &&
                // In a folder that users share, the others' files are theirs to remove.
                InspectPath(path, error).modified < oldest && !error && IsOwn(path)) {
                leftBehind.push_back(path);
            }
            return true;
        };
        std::error_code ignored;
        ReadDirectory(folder, collect, ignored);
        for (const fs::path& path : leftBehind) {
            RemoveTree(path, ignored);
        }
    } catch (...) { // it is only tidying up
    }
}

} // namespace orvcore
