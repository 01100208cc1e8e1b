#include "FolderFiles.h"

#include "Errors.h"
#include "Output.h"

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>

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

void Collect(const fs::path& folder, const fs::path& exclude, std::vector<fs::path>& files)
{
    std::error_code failed;
    std::vector<fs::path> folders;
    const auto take = [&](const fs::path& path, FileKind kind) {
        if (orvcore::IsPrivateName(path.filename())) {
            return true;
        }
        if (kind == FileKind::Directory) {
            folders.push_back(path);
        } else if (!orvcore::IsSameFile(path, exclude)) {
            NeedFile(path, kind);
            files.push_back(path);
        }
        return true;
    };
    orvcore::ReadDirectory(folder, take, failed);
    if (failed) {
        throw FileError(ToText(folder), failed.message());
    }
    for (const fs::path& below : folders) {
        Collect(below, exclude, files);
    }
}

} // namespace

std::vector<fs::path> FilesToPack(const fs::path& folder, const fs::path& exclude)
{
    std::vector<fs::path> files;
    Collect(folder, exclude, files);
    return files;
}

} // namespace zelt
