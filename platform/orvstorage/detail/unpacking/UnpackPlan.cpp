#include <orvstorage/detail/unpacking/UnpackPlan.h>

#include <orvstorage/detail/names/EntryName.h>
#include <orvstorage/detail/names/NameRegister.h>
#include <orvstorage/detail/reading/EntryReader.h>

#include <unordered_map>

namespace orvstorage::detail {

namespace {

bool IsLimit(ZipError error)
{
    return error == ZipError::EntryTooLarge || error == ZipError::RatioTooHigh;
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
        return true;
    }

private:
    ZipError Judge(std::size_t index, ZipFailure& failure)
    {
        const ArchiveEntry& entry = archive_.Entries()[index];
        const EntryName& name = names_[index];
        if (entry.nameHasNul) {
            return ZipError::ControlCharacter;
        }
        if (name.error != ZipError::None) {
            return name.error;
        }
        if (!EntryReader::MayRead(entry, limits_, failure)) {
            return failure.error;
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
        refusal.error = Judge(index, refusal);
        total_ += entry.kind == EntryKind::File && !refusal ? entry.shown.size : 0;
        if (IsLimit(refusal.error) || total_ > limits_.maxTotalSize) {
            failure = IsLimit(refusal.error) ? refusal : failure;
            failure.error = IsLimit(refusal.error) ? refusal.error : ZipError::TotalTooLarge;
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
    std::uint64_t total_ = 0; // never overflows: each part is within the entry limit, and it ends at the total's
};

} // namespace

bool MakeUnpackPlan(const ZipArchive& archive, const ZipLimits& limits, UnpackPlan& plan, ZipFailure& failure)
{
    return Planner(archive, limits, plan).Run(failure);
}

} // namespace orvstorage::detail
