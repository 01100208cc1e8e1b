#include <tools/zelt/support/FolderFiles.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/WalkTree.h>

#include <string>

namespace zelt {

namespace {

namespace fs = std::filesystem;
using orvcore::FileKind;

void NeedFile(const fs::path& path, FileKind kind)
{
    if (kind == FileKind::Link) {
        throw FileError(ToText(path), "it is a symbolic link, which a package cannot hold");
    }
    if (kind != FileKind::File) {
        throw FileError(ToText(path), "it is neither a file nor a folder");
    }
}

} // namespace

// The same choice as the library's packing makes, and the same refusals, but with the author's own paths in the
// messages: what is packed is a copy.
std::vector<fs::path> FilesToPack(const fs::path& folder, const fs::path& exclude)
{
    std::vector<fs::path> files;
    orvcore::TreeVisitor visitor;
    visitor.visit = [&](const fs::path& path, FileKind kind) {
        if (orvcore::IsPrivateName(path.filename())) {
            return orvcore::WalkNext::PassOver;
        }
        if (kind != FileKind::Directory && !orvcore::IsSameFile(path, exclude)) {
            NeedFile(path, kind);
            files.push_back(path);
        }
        return orvcore::WalkNext::GoOn;
    };
    visitor.fail = [](const fs::path& unread, const std::error_code& error) -> orvcore::WalkNext {
        throw FileError(ToText(unread), error.message());
    };
    orvcore::WalkTree(folder, visitor);
    return files;
}

} // namespace zelt
