#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/text/Guid.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace orvcore {

namespace fs = std::filesystem;

namespace {

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

bool IsPrivateName(const fs::path& fileName)
{
    const UTF8String name = PathToUTF8(fileName);
    const std::u8string_view view = name;
    return view.starts_with(kPrefix) && view.ends_with(kSuffix) && view.size() > kPrefix.size() + kSuffix.size() &&
           Guid::FromString(AsNarrow(view.substr(kPrefix.size(), view.size() - kPrefix.size() - kSuffix.size())))
               .has_value();
}

void RemoveLeftBehind(const fs::path& folder, std::chrono::hours age) noexcept
{
    try {
        const FileTime oldest = std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now()) - age;
        std::vector<fs::path> leftBehind;
        const auto collect = [&](const fs::path& path, FileKind kind) {
            std::error_code error;
            if ((kind == FileKind::File || kind == FileKind::Directory) && IsPrivateName(path.filename()) &&
                InspectPath(path, error).modified < oldest && !error) {
                leftBehind.push_back(path);
            }
            return true;
        };
        std::error_code ignored;
        ReadDirectory(folder, collect, ignored);
        std::for_each(leftBehind.begin(), leftBehind.end(), [](const fs::path& path) { RemoveTree(path); });
    } catch (...) { // it is only tidying up
    }
}

#if !defined(_WIN32)

bool RenameOver(const fs::path& from, const fs::path& to, std::error_code& error)
{
    if (MayReplace(to, error)) {
        fs::rename(from, to, error);
    }
    return !error;
}

#endif

} // namespace orvcore
