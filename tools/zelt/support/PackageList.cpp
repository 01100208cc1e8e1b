#include <tools/zelt/support/PackageList.h>

#include <tools/zelt/output/Output.h>

#include <orvcore/files/Files.h>
#include <orvcore/files/WalkTree.h>
#include <package/PackageNames.h>

#include <cstdio>

namespace zelt {

namespace {

namespace fs = std::filesystem;

// A device or another file without an end may be named; a list of names is far shorter.
constexpr std::uint64_t kLongestList = std::uint64_t{1} << 30; // bytes

std::string StandardInput()
{
    std::string text;
    char piece[1 << 14];
    while (const std::size_t size = std::fread(piece, 1, sizeof piece, stdin)) {
        text.append(piece, size);
    }
    return text;
}

void AddListed(const PackageList& list, std::vector<std::string>& names)
{
    const std::string text = ReadInput(list.listFile);
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(list.isNullSeparated ? '\0' : '\n', begin), text.size());
        std::string name = text.substr(begin, end - begin);
        // A list that was written on Windows.
        if (!list.isNullSeparated && name.ends_with('\r')) {
            name.pop_back();
        }
        if (!name.empty()) {
            names.push_back(std::move(name));
        }
        begin = end + 1;
    }
}

// As a listing of the library finds them: a link to a file counts as that file.
bool IsPackage(const fs::path& path, orvcore::FileKind kind)
{
    return path.extension() == fs::path(orvcapsule::kCapsuleExtn) && kind != orvcore::FileKind::Directory &&
           (kind != orvcore::FileKind::Link || orvcore::IsFile(path));
}

void AddBelow(const fs::path& folder, std::vector<std::string>& files, ExitCode& exit)
{
    orvcore::TreeVisitor visitor;
    visitor.visit = [&](const fs::path& path, orvcore::FileKind kind) {
        if (IsPackage(path, kind)) {
            files.push_back(ToText(path));
        }
        return orvcore::WalkNext::GoOn;
    };
    visitor.fail = [&](const fs::path& unread, const std::error_code& error) {
        ReportError(ToText(unread), error.message());
        exit = ExitCode::kBadFile;
        return orvcore::WalkNext::GoOn;
    };
    orvcore::WalkTree(folder, visitor);
}

} // namespace

std::string ReadInput(const std::string& file)
{
    if (file == "-") {
        return StandardInput();
    }
    std::error_code error;
    std::string text = orvcore::ReadWholeFile(ToPath(file), kLongestList, error);
    if (error) {
        throw FileError(file, "it cannot be read (" + error.message() + ')');
    }
    return text;
}

void NeedSome(const PackageList& list)
{
    if (list.names.empty() && list.listFile.empty()) {
        throw UsageError("give a FILE, a FOLDER or --files-from");
    }
}

std::vector<std::string> FindPackages(const PackageList& list, ExitCode& exit)
{
    NeedSome(list);
    std::vector<std::string> names = list.names;
    if (!list.listFile.empty()) {
        AddListed(list, names);
    }
    std::vector<std::string> files;
    for (std::string& name : names) {
        const fs::path path = ToPath(name);
        if (orvcore::IsDirectory(path) && !(list.takesParts && orvcore::IsFile(path / orvcapsule::kJSONFileName))) {
            AddBelow(path, files, exit);
        } else {
            files.push_back(std::move(name));
        }
    }
    return files;
}

} // namespace zelt
