#include <orvstorage/detail/packing/FolderScan.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/WalkTree.h>
#include <orvstorage/detail/names/NameRegister.h>
#include <orvstorage/shared/EntryName.h>

#include <algorithm>

namespace orvstorage::detail {

namespace fs = std::filesystem;
using orvcore::FileInfo;
using orvcore::FileKind;
using orvcore::WalkNext;

namespace {

// A zip's time has no zone: UTC is the one choice that makes the same folder the same archive everywhere.
// Date: year from 1980 in 7 bits, month in 4, day in 5. Time: hours in 5 bits, minutes in 6, seconds in 5, halved.
// Years beyond that are put to the nearest day there is.
void SetDosTime(orvcore::FileTime time, PackItem& item)
{
    using namespace std::chrono;
    const auto seconds = floor<std::chrono::seconds>(time);
    const auto day = floor<days>(seconds);
    const year_month_day date(day);
    const hh_mm_ss clock(seconds - day);
    const int year = static_cast<int>(date.year());
    if (year < 1980 || year > 2107) {
        item.dosDate = year < 1980 ? 1 << 5 | 1 : 127 << 9 | 12 << 5 | 31;
        item.dosTime = 0;
        return;
    }
    const auto months = static_cast<unsigned>(date.month());
    const auto dayOfMonth = static_cast<unsigned>(date.day());
    item.dosDate = static_cast<std::uint16_t>(static_cast<unsigned>(year - 1980) << 9 | months << 5 | dayOfMonth);
    item.dosTime = static_cast<std::uint16_t>(clock.hours().count() << 11 | clock.minutes().count() << 5 |
                                              clock.seconds().count() / 2);
}

ZipFault CannotRead(const std::error_code& error)
{
    return {ZipError::SourceMissing, error.message()};
}

ZipResult<PackItem> Describe(const fs::path& path, const orvcore::UTF8String& name)
{
    std::error_code error;
    // Of the thing itself: a link is seen as one, and refused.
    const FileInfo info = orvcore::InspectPath(path, error);
    if (error || info.kind == FileKind::Nothing) {
        return CannotRead(error ? error : std::make_error_code(std::errc::no_such_file_or_directory));
    }
    if (info.kind != FileKind::File) {
        return info.kind == FileKind::Link ? ZipError::SymbolicLink : ZipError::SpecialFile;
    }
    PackItem item{name, path, info.size};
    SetDosTime(info.modified, item);
    return item;
}

class Scanner {
public:
    Scanner(const fs::path& exclude, const ZipLimits& limits)
        : exclude_(exclude)
        , limits_(limits)
    {
    }

    ZipResult<std::vector<PackItem>> Scan(const fs::path& folder)
    {
        orvcore::TreeVisitor visitor;
        visitor.visit = [this](const fs::path& path, FileKind kind) { return Visit(path, kind); };
        // The prefix ends with a slash, or is empty at the top: there rfind finds none, and npos + 1 is 0.
        visitor.leave = [this](const fs::path&) { prefix_.erase(prefix_.rfind(u8'/', prefix_.size() - 2) + 1); };
        visitor.fail = [this](const fs::path&, const std::error_code& error) {
            return Refuse(CannotRead(error).At(prefix_));
        };
        return orvcore::WalkTree(folder, visitor) ? ZipResult(std::move(items_)) : fault_;
    }

private:
    WalkNext Refuse(ZipFault fault)
    {
        fault_ = std::move(fault);
        return WalkNext::End;
    }

    WalkNext Visit(const fs::path& path, FileKind kind)
    {
        if (orvcore::IsPrivateName(path.filename())) {
            return WalkNext::PassOver;
        }
        const orvcore::UTF8String name = prefix_ + orvcore::PathToUTF8(path.filename());
        return kind == FileKind::Directory ? Enter(name + u8'/') : Take(path, name);
    }

    WalkNext Enter(orvcore::UTF8String prefix)
    {
        prefix_ = std::move(prefix);
        const auto depth = static_cast<std::uint64_t>(std::count(prefix_.begin(), prefix_.end(), u8'/'));
        // Here and not with the other names at the end: a folder may be deeper than what the walk should follow.
        return depth > limits_.maxDepth ? Refuse(ZipFault{ZipError::TooDeep}.At(prefix_)) : WalkNext::GoOn;
    }

    WalkNext Take(const fs::path& path, const orvcore::UTF8String& name)
    {
        // By what it is, not by its name: the archive's path may lead here through a link or in another spelling.
        if (orvcore::IsSameFile(path, exclude_)) {
            return WalkNext::GoOn;
        }
        auto item = Describe(path, name);
        if (!item) {
            return Refuse(ZipFault(item.Fault()).At(name));
        }
        items_.push_back(std::move(*item));
        return WalkNext::GoOn;
    }

    const fs::path& exclude_;
    const ZipLimits& limits_;
    std::vector<PackItem> items_;
    orvcore::UTF8String prefix_; // of the names in the folder where the walk is
    ZipFault fault_;
};

// The rules of unpacking: what is packed here must come out on every system.
ZipFault CheckNames(const std::vector<PackItem>& items, const ZipLimits& limits)
{
    NameRegister names(limits);
    for (const PackItem& item : items) {
        const EntryName checked = CheckEntryName(item.name);
        const ZipError error = checked.error != ZipError::None ? checked.error : names.Enter(checked.relative, false);
        if (error != ZipError::None) {
            return ZipFault{error}.At(item.name);
        }
    }
    return {};
}

} // namespace

ZipResult<PackItem> DescribeItem(const fs::path& path, const orvcore::UTF8String& name)
{
    std::error_code error = std::make_error_code(std::errc::invalid_argument);
    // A link named by the caller is the caller's choice, unlike one met on the way through a folder.
    const fs::path real = orvcore::IsUsablePath(path) ? orvcore::RealPath(path, error) : fs::path();
    return error ? CannotRead(error) : Describe(real, name);
}

ZipResult<std::vector<PackItem>> ScanFolder(const fs::path& folder, const fs::path& exclude, const ZipLimits& limits)
{
    auto items = Scanner(exclude, limits).Scan(folder);
    if (!items) {
        return items;
    }
    // The walk goes folder by folder; the archive's order is that of whole names, in which "a.txt" comes before "a/b".
    std::sort(items->begin(), items->end(), [](const PackItem& a, const PackItem& b) { return a.name < b.name; });
    if (items->empty()) {
        return ZipError::NothingToPack;
    }
    ZipFault fault = CheckNames(*items, limits);
    return fault ? fault : std::move(items);
}

} // namespace orvstorage::detail
