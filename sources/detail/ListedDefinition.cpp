#include <sources/detail/ListedDefinition.h>

#include <capsule/shared/ListedCapsule.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <package/DefinitionFile.h>
#include <package/PackageNames.h>
#include <sources/detail/EntryFields.h>
#include <validation/TemplateReading.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace orvcapsule::detail {

// A listing reads definitions on all workers, and a hostile one of 8 MiB may take half a gigabyte while it is read. So
// workers take bytes from one budget before they unpack a text, and wait where there are not enough. The budget is for
// the process, not for a listing: several listings may run.
//
// A worker holds at most one share at a time, and waits meanwhile for nothing that needs a share itself, so the shares
// always come back. A text as large as the budget or larger takes all of it and is read alone.

namespace {

// Bytes of definition text that all threads may have in hand. While it is read, a text that is made for the purpose
// takes about 60 times its size.
class TextBudget {
public:
    void Take(std::uint64_t bytes)
    {
        std::unique_lock lock(mutex_);
        given_.wait(lock, [&] { return left_ >= bytes; });
        left_ -= bytes;
    }
    void Give(std::uint64_t bytes)
    {
        {
            const std::lock_guard lock(mutex_);
            left_ += bytes;
        }
        // All: those that wait want different amounts.
        given_.notify_all();
    }

    // Room for 64 definitions of the first size (32 KiB) at one time: more than most machines have workers, so that
    // ordinary packages hardly wait.
    static constexpr std::uint64_t kAll = std::uint64_t{2} << 20U;

private:
    std::mutex mutex_;
    std::condition_variable given_;
    std::uint64_t left_ = kAll;
};

// What one thread has of the budget. A text as large as the budget or larger takes all of it.
class BudgetShare {
public:
    explicit BudgetShare(std::uint64_t bytes)
        : bytes_(std::min(bytes, TextBudget::kAll))
    {
        Budget().Take(bytes_);
    }
    BudgetShare(const BudgetShare&) = delete;
    BudgetShare& operator=(const BudgetShare&) = delete;
    ~BudgetShare()
    {
        Budget().Give(bytes_);
    }

private:
    static TextBudget& Budget()
    {
        static orvcore::NoDestructor<TextBudget> budget;
        return *budget;
    }
    std::uint64_t bytes_;
};

void Refuse(CapsuleEntry& entry, Finding reason)
{
    entry.refusal = std::make_shared<const Finding>(std::move(reason));
}

bool TryFill(CapsuleEntry& entry, const orvcore::UTF8String& text)
{
    try {
        const std::optional<Capsule> capsule = serialization::ListedCapsuleFromJson(text);
        if (capsule) {
            FillFromCapsule(entry, *capsule);
        }
        return capsule.has_value();
    } catch (const std::exception&) { // what its reader gives up
        // Lack of memory is among them: one monstrous definition then costs its own entry.
        return false;
    }
}

bool Fill(CapsuleEntry& entry, const orvcore::UTF8String& text)
{
    const bool isFilled = TryFill(entry, text);
    if (!isFilled || entry.apiVersion.empty()) { // reading it once more to know why costs broken templates only
        if (const DefinitionReading reading = ReadDefinition(text); !reading) {
            Refuse(entry, reading.refusals.front());
        }
    }
    return isFilled;
}

} // namespace

bool FillFromDefinition(CapsuleEntry& entry, const CapsuleZip& package, const std::function<bool()>& stop)
{
    // Nearly all definitions are of the first size; the size of one is known when it was found too large.
    for (const std::uint64_t size :
         {std::uint64_t{32} << 10U, std::uint64_t{512} << 10U, std::uint64_t{orvcore::serialization::kMaxJSONSize}}) {
        // The size is that of the attempt, not of the text, which is not known before the entry is found: an archive's
        // directory may lie about it, and unpacking ends at the limit.
        const BudgetShare share(size);
        // After the wait, which may have been long.
        if (stop()) {
            return false;
        }
        const auto text = package.GetArchive().UnzipText(kJSONFileName, size);
        if (text && !text->empty()) {
            return Fill(entry, *text);
        }
        const orvstorage::ZipFailure failure = package.GetLastFailure();
        if (failure.error != orvstorage::ZipError::EntryTooLarge || size == orvcore::serialization::kMaxJSONSize) {
            failure ? Refuse(entry, DescribeFailure(failure)) : static_cast<void>(Fill(entry, {}));
            return false;
        }
    }
    return false;
}

bool FillFromDefinitionFile(CapsuleEntry& entry, const orvcore::UTF8String& path, std::uint64_t size,
                            const std::function<bool()>& stop)
{
    if (size > orvcore::serialization::kMaxJSONSize) {
        Refuse(entry, {Severity::Error, "EntryTooLarge", "definition.json is larger than readers take", kJSONFileName});
        return false;
    }
    const BudgetShare share(size);
    if (stop()) {
        return false;
    }
    const orvcore::UTF8String text = GetJsonContent(path);
    return Fill(entry, text) && entry.refusal == nullptr;
}

} // namespace orvcapsule::detail
