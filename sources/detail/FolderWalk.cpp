#include <sources/detail/FolderWalk.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Files.h>
#include <package/PackageNames.h>

#include <algorithm>

namespace orvcapsule::detail {

namespace fs = std::filesystem;

namespace {

using orvcore::FileKind;

bool IsNothingThere(const std::error_code& error)
{
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

FileKind KindBehind(const fs::path& link)
{
    std::error_code error;
    // Gone by now, or a link that leads nowhere: neither folder nor file. What cannot be looked at may be a package,
    // whose entry then tells why.
    const FileKind kind = orvcore::InspectTarget(link, error).kind;
    return error ? FileKind::File : kind;
}

// A walk of its own beside WalkTree, which reads a folder to its end before it calls anybody. Here `stop` is asked at
// each name, so that a cancelled listing does not wait for a folder of 100,000 files, and names are kept instead of
// paths: that folder takes half the time and a fifth of the memory.
class Walk {
public:
    using OnPackage = std::function<void(const FolderPath& folder, FileName package)>;

    Walk(Depth depth, const OnPackage& onPackage, const std::function<bool()>& stop)
        : depth_(depth)
        , onPackage_(onPackage)
        , stop_(stop)
        , extension_(orvcore::PathFromUTF8(kCapsuleExtn).native())
    {
    }

    void Visit(const fs::path& path)
    {
        Folder folder{std::make_shared<const fs::path>(path), {}, {}};
        std::error_code error;
        List(folder, error);
        if (error && !IsNothingThere(error)) {
            // Costs this folder's rest and nothing else; what was found in it so far stands.
            found_.failures.push_back({orvcore::PathToUTF8(path), error});
        }
        std::sort(folder.subFolders.begin(), folder.subFolders.end());
        // By the bytes (on Windows code units) of the names, so that the order does not depend on the file system or
        // the locale.
        std::sort(folder.packages.begin(), folder.packages.end());
        for (auto at = folder.subFolders.begin(); at != folder.subFolders.end() && !stopped_; ++at) {
            Visit(path / *at);
        }
        for (const auto& [name, number] : folder.packages) {
            found_.packages.push_back(number);
        }
        if (!folder.packages.empty()) {
            found_.folders.push_back(folder.path);
        }
    }

    FoundPackages TakeResult()
    {
        return std::move(found_);
    }

private:
    struct Folder {
        FolderPath path;
        std::vector<FileName> subFolders;
        std::vector<std::pair<FileName, std::size_t>> packages; // with their numbers
    };

    void List(Folder& folder, std::error_code& error)
    {
        if (IsStopped()) {
            return;
        }
        const auto sort = [&](const fs::path& path, FileKind kind) {
            Sort(path, kind == FileKind::Link ? KindBehind(path) : kind, kind == FileKind::Link, folder);
            return !IsStopped();
        };
        orvcore::ReadDirectory(*folder.path, sort, error);
    }

    void Sort(const fs::path& path, FileKind kind, bool isLink, Folder& folder)
    {
        FileName name = path.filename().native();
        if (kind == FileKind::Directory) {
            // A link to a folder could lead above the root and make the walk endless, and would give a package two
            // paths.
            if (depth_ == Depth::AllBelow && !isLink) {
                folder.subFolders.push_back(std::move(name));
            }
            return;
        }
        ++found_.files;
        if (IsPackageName(name) && kind == FileKind::File) {
            folder.packages.emplace_back(name, count_++);
            onPackage_(folder.path, std::move(name));
        }
    }

    // A file named ".zelt" has no stem, and is a hidden file on some systems.
    bool IsPackageName(const FileName& name) const
    {
        return name.size() > extension_.size() && name.ends_with(extension_);
    }

    bool IsStopped()
    {
        stopped_ = stopped_ || stop_();
        return stopped_;
    }

    const Depth depth_;
    const OnPackage& onPackage_;
    const std::function<bool()>& stop_;
    const FileName extension_;
    FoundPackages found_;
    std::size_t count_ = 0; // packages
    bool stopped_ = false;
};

fs::path PlainPath(const fs::path& folder)
{
    return orvcore::WithoutClosingSeparators(FullFolderPath(folder).lexically_normal());
}

} // namespace

FoundPackages FindPackages(const fs::path& top, Depth depth,
                           const std::function<void(const FolderPath& folder, FileName package)>& onPackage,
                           const std::function<bool()>& stop)
{
    Walk walk(depth, onPackage, stop);
    if (orvcore::IsUsablePath(top)) {
        walk.Visit(top);
    }
    return walk.TakeResult();
}

bool CanBeListed(const fs::path& folder)
{
    std::error_code error;
    const auto endAtOnce = [](const fs::path&, FileKind) { return false; };
    if (orvcore::IsDirectory(folder)) {
        orvcore::ReadDirectory(folder, endAtOnce, error);
        return !error;
    }
    return false;
}

bool MayBeThere(const fs::path& folder)
{
    std::error_code error;
    // Where the question fails, listing the folder tells why; counted as missing it would silently vanish.
    return orvcore::InspectTarget(folder, error).kind == FileKind::Directory || error;
}

// Every further folder would fail in the same way, so what is missing is not one folder's content.
bool ConcernsWholeWalk(const std::error_code& error)
{
    return error == std::errc::too_many_files_open || error == std::errc::too_many_files_open_in_system ||
           error == std::errc::not_enough_memory;
}

fs::path FullFolderPath(const fs::path& folder)
{
    std::error_code error;
    // An empty path made absolute would be the process's working folder, whose templates were not asked for.
    fs::path full = folder.empty() ? folder : fs::absolute(folder, error);
    return orvcore::WithoutClosingSeparators(error ? folder : full);
}

bool IsSamePath(const fs::path& one, const fs::path& other)
{
    return PlainPath(one) == PlainPath(other);
}

// An unusable path (empty, or with a NUL in it) would be cut short by the system and lead to another folder.
bool LeadToSameFolder(const fs::path& one, const fs::path& other)
{
    return orvcore::IsUsablePath(one) && orvcore::IsUsablePath(other) && orvcore::IsSameFile(one, other);
}

// Real paths tell a spelling apart from another folder, and the walk follows no link to a folder. What cannot be
// resolved (it is gone, or nobody may look) is taken by the rules of paths, and the walk tells what is wrong with it.
fs::path PathInWalk(const fs::path& wanted, const fs::path& top)
{
    if (!orvcore::IsUsablePath(wanted)) {
        return {};
    }
    std::error_code noWanted;
    std::error_code noTop;
    const fs::path realWanted = orvcore::RealPath(wanted, noWanted);
    const fs::path realTop = orvcore::RealPath(top, noTop);
    const fs::path relative = noWanted || noTop ? PlainPath(wanted).lexically_relative(PlainPath(top))
                                                : realWanted.lexically_relative(realTop);
    const bool isBelow = !relative.empty() && relative != fs::path(".") && *relative.begin() != fs::path("..");
    return isBelow ? top / relative : fs::path();
}

} // namespace orvcapsule::detail
