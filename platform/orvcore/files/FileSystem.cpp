#include <orvcore/files/FileSystem.h>

#include <orvcore/files/detail/OrThrow.h>
#include <orvcore/files/shared/NewFolders.h>

// What is the same on all systems: the throwing forms, each made of the form with an error code, and questions that
// answer with a bool. These never throw: what cannot be found out counts as not there.

namespace orvcore {

namespace fs = std::filesystem;
using detail::OrThrow;
using Error = std::error_code;

namespace {

FileKind KindOf(const fs::path& path) noexcept
{
    try {
        Error unknown;
        return InspectTarget(path, unknown).kind;
    } catch (...) { // no memory
        return FileKind::Nothing;
    }
}

} // namespace

bool Exists(const fs::path& path) noexcept
{
    return KindOf(path) != FileKind::Nothing;
}

bool IsFile(const fs::path& path) noexcept
{
    return KindOf(path) == FileKind::File;
}

bool IsDirectory(const fs::path& path) noexcept
{
    return KindOf(path) == FileKind::Directory;
}

FileInfo InspectPath(const fs::path& path)
{
    return OrThrow("cannot inspect", path, [&](Error& error) { return InspectPath(path, error); });
}

FileInfo InspectTarget(const fs::path& path)
{
    return OrThrow("cannot inspect", path, [&](Error& error) { return InspectTarget(path, error); });
}

bool MakeDirectory(const fs::path& path, FolderAccess access)
{
    return OrThrow("cannot create folder", path, [&](Error& error) { return MakeDirectory(path, error, access); });
}

void EnsureDirectory(const fs::path& directory)
{
    OrThrow("cannot create folder", directory, [&](Error& error) { EnsureDirectory(directory, error); });
}

void EnsureDirectory(const fs::path& directory, Error& error)
{
    // A path with a NUL in it would name another folder to the system, which reads up to the NUL.
    error = std::make_error_code(std::errc::invalid_argument);
    detail::NewFolders folders;
    if (IsUsablePath(directory) && folders.Make(directory, error)) {
        folders.Keep();
    }
}

bool RemoveOne(const fs::path& path)
{
    return OrThrow("cannot remove", path, [&](Error& error) { return RemoveOne(path, error); });
}

void RemoveTree(const fs::path& path)
{
    OrThrow("cannot remove", path, [&](Error& error) { RemoveTree(path, error); });
}

fs::path RealPath(const fs::path& path)
{
    return OrThrow("cannot find the real path", path, [&](Error& error) { return RealPath(path, error); });
}

void ReadDirectory(const fs::path& directory, const DirectoryVisitor& visit)
{
    OrThrow("cannot read folder", directory, [&](Error& error) { ReadDirectory(directory, visit, error); });
}

void MakeHardLink(const fs::path& from, const fs::path& to)
{
    OrThrow("cannot create link", to, [&](Error& error) { return MakeHardLink(from, to, error); });
}

} // namespace orvcore
