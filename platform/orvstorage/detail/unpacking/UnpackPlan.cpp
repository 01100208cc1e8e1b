#include <orvstorage/detail/unpacking/UnpackPlan.h>

#include <orvstorage/detail/names/NameRegister.h>
#include <orvstorage/detail/reading/EntryReader.h>
#include <orvstorage/shared/EntryName.h>

#include <unordered_map>

namespace orvstorage::detail {

namespace {

bool IsLimit(ZipError error)
{
    return error == ZipError::EntryTooLarge || error == ZipError::RatioTooHigh || error == ZipError::TooDeep ||
           error == ZipError::TooManyEntries;
}

// A name that stands for two files stands for neither: which one was meant cannot be known.
bool IsRepeated(const std::unordered_map<std::u8string, int>& counts, const orvcore::UTF8String& relative)
{
    return counts.at(relative) > 1;
}

class Planner {
public:
    Planner(const ZipArchive& archive, const ZipLimits& limits, UnpackPlan& plan)
        : archive_(archive)
        , limits_(limits)
        , plan_(plan)
        , register_(limits)
    {
    }

    bool Run(ZipFailure& failure)
    {
        const auto& entries = archive_.Entries();
        names_.reserve(entries.size());
        for (const ArchiveEntry& entry : entries) {
            names_.push_back(CheckEntryName(entry.shown.name));
            if (entry.kind == EntryKind::File) {
                ++counts_[names_.back().relative];
            }
        }
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (!Plan(i, failure)) {
                return false;
            }
        }
        return IsWithinRatio(failure);
    }

private:
    // Many entries together may be what none is alone.
    bool IsWithinRatio(ZipFailure& failure) const
    {
        std::uint64_t size = 0;
        std::uint64_t packed = 0;
        for (const UnpackPlan::File& file : plan_.files) {
            size += archive_.Entries()[file.index].shown.size;
            packed += archive_.Entries()[file.index].shown.compressedSize;
        }
        failure.error = IsBeyondRatio(size, packed, limits_) ? ZipError::RatioTooHigh : ZipError::None;
        return !failure;
    }

    ZipError Judge(std::size_t index)
    {
        const ArchiveEntry& entry = archive_.Entries()[index];
        const EntryName& name = names_[index];
        if (name.error != ZipError::None) {
            return name.error;
        }
        if (const ZipError error = EntryReader::Judge(entry, limits_); error != ZipError::None) {
            return error;
        }
        if (entry.kind == EntryKind::File && IsRepeated(counts_, name.relative)) {
            return ZipError::DuplicateName;
        }
        return register_.Enter(name.relative, entry.kind == EntryKind::Directory);
    }

    bool Plan(std::size_t index, ZipFailure& failure)
    {
        const ArchiveEntry& entry = archive_.Entries()[index];
        if (entry.shown.name == u8"./" && entry.kind == EntryKind::Directory) {
            return true; // the target folder itself, as some programs list the folder that they packed
        }
        ZipFailure refusal = failure;
        refusal.entry = entry.shown.name;
        refusal.error = Judge(index);
        // Never overflows: each part is within the entry limit, and it ends at the total's.
        plan_.totalSize += entry.kind == EntryKind::File && !refusal ? entry.shown.size : 0;
        if (IsLimit(refusal.error) || plan_.totalSize > limits_.maxTotalSize) {
            failure = IsLimit(refusal.error) ? refusal : failure;
            failure.error = IsLimit(refusal.error) ? refusal.error : ZipError::TotalTooLarge;
            if (failure.error == ZipError::TooManyEntries) {
                failure.entry.clear(); // it is all of them
            }
            return false;
        }
        if (refusal) {
            plan_.refused.push_back(std::move(refusal));
        } else if (entry.kind == EntryKind::Directory) {
            plan_.directories.push_back(names_[index].relative);
        } else {
            plan_.files.push_back({index, names_[index].relative});
        }
        return true;
    }

    const ZipArchive& archive_;
    const ZipLimits& limits_;
    UnpackPlan& plan_;
    std::vector<EntryName> names_;
    std::unordered_map<std::u8string, int> counts_;
    NameRegister register_;
};

} // namespace

bool MakeUnpackPlan(const ZipArchive& archive, const ZipLimits& limits, UnpackPlan& plan, ZipFailure& failure)
{
    return Planner(archive, limits, plan).Run(failure);
}

} // namespace orvstorage::detail
