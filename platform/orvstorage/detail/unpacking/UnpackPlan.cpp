#include <orvstorage/detail/unpacking/UnpackPlan.h>

#include <orvstorage/detail/names/NameRegister.h>
#include <orvstorage/detail/reading/EntryReader.h>
#include <orvstorage/shared/EntryName.h>

#include <unordered_map>

// Decides from the directory alone what unpacking will do, before a byte is written. A bad name or kind costs one
// entry, which goes to the list of refusals; a limit costs the archive. Names are judged in two passes, because that a
// name comes twice is known only when all have been seen, and then neither of the two is unpacked.

namespace orvstorage::detail {

namespace {

// What goes beyond a limit is made to do harm, and its other entries are not to be trusted either.
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
    Planner(const ZipArchive& archive, const ZipLimits& limits)
        : archive_(archive)
        , limits_(limits)
        , register_(limits)
    {
    }

    ZipResult<UnpackPlan> Run()
    {
        const auto& entries = archive_.Entries();
        names_.reserve(entries.size());
        for (const ArchiveEntry& entry : entries) {
            names_.push_back(CheckEntryName(entry.shown.name));
            // A folder may be listed as often as it likes.
            if (entry.kind == EntryKind::File) {
                ++counts_[names_.back().relative];
            }
        }
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (const ZipFault fault = Plan(i)) {
                return fault;
            }
        }
        return IsWithinRatio() ? ZipResult(std::move(plan_)) : ZipError::RatioTooHigh;
    }

private:
    // Many entries together may be what none is alone.
    bool IsWithinRatio() const
    {
        std::uint64_t size = 0;
        std::uint64_t packed = 0;
        for (const UnpackPlan::File& file : plan_.files) {
            size += archive_.Entries()[file.index].shown.size;
            packed += archive_.Entries()[file.index].shown.compressedSize;
        }
        return !IsBeyondRatio(size, packed, limits_);
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
        // Last, because it takes the name's place: what is refused for another reason must not keep a good entry from
        // it.
        return register_.Enter(name.relative, entry.kind == EntryKind::Directory);
    }

    // Fails where the archive as a whole is to be refused.
    ZipFault Plan(std::size_t index)
    {
        const ArchiveEntry& entry = archive_.Entries()[index];
        if (entry.shown.name == u8"./" && entry.kind == EntryKind::Directory) {
            return {}; // the target folder itself, as some programs list the folder that they packed
        }
        const ZipError refusal = Judge(index);
        if (IsLimit(refusal)) { // too many are not one entry's fault
            return refusal == ZipError::TooManyEntries ? ZipFault{refusal} : ZipFault{refusal}.At(entry.shown.name);
        }
        // Never overflows: each part is within the entry limit, and it ends at the total's.
        plan_.totalSize += entry.kind == EntryKind::File && refusal == ZipError::None ? entry.shown.size : 0;
        if (plan_.totalSize > limits_.maxTotalSize) {
            return {ZipError::TotalTooLarge};
        }
        if (refusal != ZipError::None) {
            plan_.refused.push_back(ZipFault{refusal}.At(entry.shown.name));
        } else if (entry.kind == EntryKind::Directory) {
            plan_.directories.push_back(names_[index].relative);
        } else {
            plan_.files.push_back({index, names_[index].relative});
        }
        return {};
    }

    const ZipArchive& archive_;
    const ZipLimits& limits_;
    UnpackPlan plan_;
    std::vector<EntryName> names_;
    std::unordered_map<std::u8string, int> counts_;
    NameRegister register_;
};

} // namespace

ZipResult<UnpackPlan> MakeUnpackPlan(const ZipArchive& archive, const ZipLimits& limits)
{
    return Planner(archive, limits).Run();
}

} // namespace orvstorage::detail
