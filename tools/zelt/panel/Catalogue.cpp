#include <tools/zelt/panel/Catalogue.h>

#include <tools/zelt/output/Output.h>
#include <tools/zelt/panel/EntryRow.h>

#include <orvcore/files/Paths.h>

#include <unordered_set>
#include <utility>

// How a page stays up to date. Each change of a template (found, changed, gone) takes the next revision, and `changes_`
// keeps the last one of each template. A page asks for what came after the revision that it knows, at most a thousand
// rows at a time, and goes on from the revision it is told. So a page that was away, slow or loaded again needs no
// state here, and a template that changes ten times while a page sleeps is told once.
//
// A number is given to a path and never taken back: the page may hold one for a template that has gone and come again.
//
// One mutex for all, held while rows are written, so that the rows and the revision belong together. The main thread
// puts entries in, the server's threads ask.

namespace zelt {

namespace {

constexpr std::size_t kMostRows = 1000;

std::string PathOf(const orvcapsule::CapsuleEntry& entry)
{
    return std::string(orvcore::AsNarrow(entry.path));
}

// True when the page would be told the same of both.
bool LooksSame(const orvcapsule::CapsuleEntry& a, const orvcapsule::CapsuleEntry& b)
{
    return a == b && a.name == b.name && a.modified == b.modified && a.fileSize == b.fileSize &&
           a.videoPreviewPath == b.videoPreviewPath && a.apiVersion == b.apiVersion && a.tags == b.tags &&
           a.needsTsUpgrade == b.needsTsUpgrade;
}

} // namespace

Catalogue::Catalogue(const std::vector<std::string>& folders)
    : folders_(folders)
{
}

void Catalogue::BeginListing()
{
    const std::lock_guard lock(mutex_);
    ++listing_;
}

void Catalogue::Put(const Entries& entries)
{
    const std::lock_guard lock(mutex_);
    for (const Entry& entry : entries) {
        PutUnlocked(entry);
    }
}

std::uint64_t Catalogue::PutUnlocked(const Entry& entry)
{
    const std::uint64_t id = NumberUnlocked(PathOf(*entry));
    Record& record = records_[id];
    const bool isNews = !record.entry || !LooksSame(*record.entry, *entry);
    record.entry = entry;
    record.listing = listing_;
    record.folder = folders_.Find(*entry);
    if (isNews) {
        Touch(id);
    }
    return id;
}

void Catalogue::Remove(std::uint64_t id)
{
    records_[id].entry.reset();
    Touch(id);
}

void Catalogue::EndListing()
{
    const std::lock_guard lock(mutex_);
    for (std::uint64_t id = 0; id < records_.size(); ++id) {
        if (records_[id].entry && records_[id].listing != listing_) {
            Remove(id);
        }
    }
}

void Catalogue::PutFolder(const std::string& folder, const Entries& entries)
{
    std::unordered_set<std::uint64_t> present;
    const std::lock_guard lock(mutex_);
    for (const Entry& entry : entries) {
        present.insert(PutUnlocked(entry));
    }
    const auto number = folders_.Find(folder);
    for (std::uint64_t id = 0; id < records_.size(); ++id) {
        const Record& record = records_[id];
        if (record.entry && record.folder == number && !present.contains(id)) {
            Remove(id);
        }
    }
}

std::uint64_t Catalogue::Revision() const
{
    const std::lock_guard lock(mutex_);
    return revision_;
}

std::string Catalogue::ChangesAfter(std::uint64_t revision) const
{
    orvcore::serialization::JSONTextWriter writer;
    std::vector<std::uint64_t> gone;
    const std::lock_guard lock(mutex_);
    auto at = changes_.upper_bound(revision);
    writer.BeginObject();
    writer.Key("rows");
    writer.BeginArray();
    for (std::size_t told = 0; at != changes_.end() && told < kMostRows; ++at, ++told) {
        revision = at->first;
        const Record& record = records_[at->second];
        if (record.entry) {
            WriteRow(writer, *record.entry, {at->second, record.folder, {}});
        } else {
            gone.push_back(at->second);
        }
    }
    writer.EndArray();
    writer.Key("gone");
    writer.BeginArray();
    for (const std::uint64_t id : gone) {
        writer.UInt(id);
    }
    writer.EndArray();
    WriteFolderList(writer, folders_);
    writer.Key("revision");
    writer.UInt(revision);
    writer.EndObject();
    return orvcore::ToNarrow(writer.Take());
}

Catalogue::Entry Catalogue::Find(std::uint64_t id) const
{
    const std::lock_guard lock(mutex_);
    return id < records_.size() ? records_[id].entry : nullptr;
}

std::uint64_t Catalogue::NumberOf(const std::string& path)
{
    const std::lock_guard lock(mutex_);
    return NumberUnlocked(path);
}

std::uint64_t Catalogue::NumberUnlocked(const std::string& path)
{
    const auto [at, isNew] = numbers_.try_emplace(path, records_.size());
    if (isNew) {
        records_.emplace_back();
    }
    return at->second;
}

std::vector<std::uint64_t> Catalogue::NumbersOf(const std::set<orvcore::UTF16String>& paths) const
{
    std::vector<std::uint64_t> found;
    const std::lock_guard lock(mutex_);
    for (const auto& path : paths) {
        const auto at = numbers_.find(std::string(orvcore::AsNarrow(orvcore::PathTextToUTF8(path))));
        if (at != numbers_.end()) {
            found.push_back(at->second);
        }
    }
    return found;
}

void Catalogue::Touch(std::uint64_t id)
{
    changes_.erase(records_[id].revision);
    records_[id].revision = ++revision_;
    changes_.emplace(revision_, id);
}

} // namespace zelt
