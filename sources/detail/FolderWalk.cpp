#include <sources/detail/FolderWalk.h>

#include <orvcore/files/FileSystem.h>
#include <package/PackageNames.h>

#include <algorithm>

namespace orvcapsule::detail {

namespace fs = std::filesystem;

namespace {

using FileName = FolderOfPackages::FileName;
using orvcore::FileKind;

bool IsNothingThere(const std::error_code& error)
{
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

// What befalls the process and not one folder.
bool ConcernsWholeWalk(const std::error_code& error)
{
    return error == std::errc::too_many_files_open || error == std::errc::too_many_files_open_in_system ||
           error == std::errc::not_enough_memory;
}

FileKind KindBehind(const fs::path& link)
{
    std::error_code ignored; // gone by now, or a link that leads nowhere: neither folder nor file
    return orvcore::InspectTarget(link, ignored).kind;
}

class Walk {
public:
    Walk(Depth depth, const std::function<bool()>& stop)
        : depth_(depth)
        , stop_(stop)
        , extension_(orvcore::PathFromUTF8(kCapsuleExtn).native())
    {
    }

    void Visit(const fs::path& folder, bool isTop)
    {
        std::vector<FileName> subFolders;
        std::vector<FileName> packages;
        std::error_code error;
        List(folder, subFolders, packages, error);
        if (error && (ConcernsWholeWalk(error) || (isTop && !IsNothingThere(error)))) {
            throw fs::filesystem_error("cannot list the templates of folder", folder, error);
        }
        std::sort(subFolders.begin(), subFolders.end());
        std::sort(packages.begin(), packages.end());
        for (auto at = subFolders.begin(); at != subFolders.end() && !stopped_; ++at) {
            Visit(folder / *at, false);
        }
        if (!packages.empty()) {
            found_.packages += packages.size();
            found_.folders.push_back({folder, std::move(packages)});
        }
    }

    FoundPackages TakeResult()
    {
        return std::move(found_);
    }

private:
    void List(const fs::path& folder, std::vector<FileName>& subFolders, std::vector<FileName>& packages,
              std::error_code& error)
    {
        if (IsStopped()) {
            return;
        }
        const auto sort = [&](const fs::path& path, FileKind kind) {
            Sort(path, kind == FileKind::Link ? KindBehind(path) : kind, kind == FileKind::Link, subFolders, packages);
            return !IsStopped();
        };
        orvcore::ReadDirectory(folder, sort, error);
    }

    void Sort(const fs::path& path, FileKind kind, bool isLink, std::vector<FileName>& subFolders,
              std::vector<FileName>& packages)
    {
        FileName name = path.filename().native();
        if (kind == FileKind::Directory) {
            if (depth_ == Depth::AllBelow && !isLink) {
                subFolders.push_back(std::move(name));
            }
            return;
        }
        ++found_.files;
        if (IsPackageName(name) && kind == FileKind::File) {
            packages.push_back(std::move(name));
        }
    }

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
    const std::function<bool()>& stop_;
    const FileName extension_;
    FoundPackages found_;
    bool stopped_ = false;
};

fs::path PlainPath(const fs::path& folder)
{
    return orvcore::WithoutClosingSeparators(FullFolderPath(folder).lexically_normal());
}

} // namespace

FoundPackages FindPackages(const fs::path& top, Depth depth, const std::function<bool()>& stop)
{
    Walk walk(depth, stop);
    if (orvcore::IsUsablePath(top)) {
        walk.Visit(top, true);
    }
    return walk.TakeResult();
}

fs::path FullFolderPath(const fs::path& folder)
{
    std::error_code error;
    fs::path full = folder.empty() ? folder : fs::absolute(folder, error);
    return orvcore::WithoutClosingSeparators(error ? folder : full);
}

bool IsSamePath(const fs::path& one, const fs::path& other)
{
    return PlainPath(one) == PlainPath(other);
}

bool LeadToSameFolder(const fs::path& one, const fs::path& other)
{
    return orvcore::IsUsablePath(one) && orvcore::IsUsablePath(other) && orvcore::IsSameFile(one, other);
}

bool IsBelow(const fs::path& inner, const fs::path& outer)
{
    const fs::path relative = PlainPath(inner).lexically_relative(PlainPath(outer));
    return !relative.empty() && relative != fs::path(".") && *relative.begin() != fs::path("..");
}

} // namespace orvcapsule::detail
