#include <orvstorage/detail/packing/FolderScan.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>
#include <orvstorage/detail/names/NameRegister.h>
#include <orvstorage/shared/EntryName.h>

#include <algorithm>

namespace orvstorage::detail {

namespace fs = std::filesystem;
using orvcore::FileInfo;
using orvcore::FileKind;

namespace {

// A zip's time has no zone: UTC is the one choice that makes the same folder the same archive everywhere.
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

bool CannotRead(const std::error_code& error, ZipFailure& failure)
{
    failure.error = ZipError::SourceMissing;
    failure.detail = error.message();
    return false;
}

bool Describe(const fs::path& path, PackItem& item, ZipFailure& failure)
{
    std::error_code error;
    const FileInfo info = orvcore::InspectPath(path, error);
    if (error || info.kind == FileKind::Nothing) {
        return CannotRead(error ? error : std::make_error_code(std::errc::no_such_file_or_directory), failure);
    }
    if (info.kind != FileKind::File) {
        failure.error = info.kind == FileKind::Link ? ZipError::SymbolicLink : ZipError::SpecialFile;
        return false;
    }
    item.path = path;
    item.size = info.size;
    SetDosTime(info.modified, item);
    return true;
}

class Scanner {
public:
    Scanner(const fs::path& exclude, const ZipLimits& limits, std::vector<PackItem>& items)
        : exclude_(exclude)
        , limits_(limits)
        , items_(items)
    {
    }

    bool Scan(const fs::path& folder, const orvcore::UTF8String& prefix, ZipFailure& failure)
    {
        if (static_cast<std::uint64_t>(std::count(prefix.begin(), prefix.end(), u8'/')) > limits_.maxDepth) {
            failure.entry = prefix;
            failure.error = ZipError::TooDeep;
            return false;
        }
        std::error_code error;
        bool taken = true;
        const auto take = [&](const fs::path& path, FileKind kind) {
            if (orvcore::IsPrivateName(path.filename())) {
                return true;
            }
            const orvcore::UTF8String name = prefix + orvcore::PathToUTF8(path.filename());
            taken = kind == FileKind::Directory ? Scan(path, name + u8'/', failure) : Take(path, name, failure);
            return taken;
        };
        orvcore::ReadDirectory(folder, take, error);
        if (!taken) {
            return false;
        }
        if (error) {
            failure.entry = prefix;
            return CannotRead(error, failure);
        }
        return true;
    }

private:
    bool Take(const fs::path& path, const orvcore::UTF8String& name, ZipFailure& failure)
    {
        if (orvcore::IsSameFile(path, exclude_)) {
            return true;
        }
        failure.entry = name;
        PackItem item;
        item.name = name;
        if (!Describe(path, item, failure)) {
            return false;
        }
        items_.push_back(std::move(item));
        failure.entry.clear();
        return true;
    }

    const fs::path exclude_;
    const ZipLimits& limits_;
    std::vector<PackItem>& items_;
};

bool CheckNames(const std::vector<PackItem>& items, const ZipLimits& limits, ZipFailure& failure)
{
    NameRegister names(limits);
    for (const PackItem& item : items) {
        const EntryName checked = CheckEntryName(item.name);
        failure.error = checked.error != ZipError::None ? checked.error : names.Enter(checked.relative, false);
        if (failure) {
            failure.entry = item.name;
            return false;
        }
    }
    return true;
}

} // namespace

bool DescribeItem(const fs::path& path, orvcore::UTF8String name, PackItem& item, ZipFailure& failure)
{
    item.name = std::move(name);
    std::error_code error;
    // A link named by the caller is the caller's choice, unlike one met on the way through a folder.
    const fs::path real = orvcore::IsUsablePath(path) ? orvcore::RealPath(path, error) : fs::path();
    if (error || real.empty()) {
        return CannotRead(error ? error : std::make_error_code(std::errc::invalid_argument), failure);
    }
    return Describe(real, item, failure);
}

bool ScanFolder(const fs::path& folder, const fs::path& exclude, const ZipLimits& limits, std::vector<PackItem>& items,
                ZipFailure& failure)
{
    if (!orvcore::IsUsablePath(folder)) {
        return CannotRead(std::make_error_code(std::errc::invalid_argument), failure);
    }
    if (!Scanner(exclude, limits, items).Scan(folder, {}, failure)) {
        return false;
    }
    std::sort(items.begin(), items.end(), [](const PackItem& a, const PackItem& b) { return a.name < b.name; });
    if (items.empty()) {
        failure.error = ZipError::NothingToPack;
    }
    return !failure && CheckNames(items, limits, failure);
}

} // namespace orvstorage::detail
